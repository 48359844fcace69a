// URIs of a parent and keys.
#include "oru/mr_meta.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/uri_derive.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

// ---- One key ----

std::string with_string(const char *parent, const char *ref, const char *key, const char *text) {
    return text_of(Uri(oru_do_uri_new_str(parent, ref, key, text)));
}

std::string with_number(const char *parent, int64_t number) {
    return text_of(Uri(oru_do_uri_new_num(parent, "a", "k", number)));
}

TEST(UriBuild, OneKey) {
    EXPECT_EQ(with_string("/p", "a", "k", "x/y"), "/p/a;k=x%2Fy");
    EXPECT_EQ(with_string("/p", "a", "k", ""), "/p/a;k=");
    EXPECT_EQ(with_number("/", -5), "/a;k=-5");
    EXPECT_EQ(with_number("/p;i=1", INT64_MIN), "/p;i=1/a;k=-9223372036854775808");
    const Value value(oru_do_value_new_boolean(1));
    EXPECT_EQ(text_of(Uri(oru_do_uri_new_val("p", "a", "k", value.get()))), "p/a;k=true");
}

TEST(UriBuild, OnlyTheKeysValueIsEscaped) {
    EXPECT_EQ(with_string("/p q", "a:b", "k k", "v v"), "/p q/a:b;k k=v%20v");
}

TEST(UriBuild, OnlyTheSlashAloneIsLeftOut) {
    EXPECT_EQ(with_string("/", "a", "k", "1"), "/a;k=1");
    EXPECT_EQ(with_string("//", "a", "k", "1"), "///a;k=1");
    const Uri uri(oru_do_uri_new_str("//", "a", "k", "1"));
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
}

TEST(UriBuild, TheResultIsNotParsed) {
    TraceCapture traces;
    const Uri uri(oru_do_uri_new_num("/p", "a", "k", 1));
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(model_of(uri), "p|a;k=1");
    EXPECT_EQ(parent_of(uri), "/p");
}

TEST(UriBuild, NothingFromNullOrEmpty) {
    const Value value(oru_do_value_new_int(1));
    for (const char *nothing : {static_cast<const char *>(nullptr), ""}) {
        EXPECT_EQ(oru_do_uri_new_str(nothing, "a", "k", "1"), nullptr);
        EXPECT_EQ(oru_do_uri_new_str("/", nothing, "k", "1"), nullptr);
        EXPECT_EQ(oru_do_uri_new_str("/", "a", nothing, "1"), nullptr);
        EXPECT_EQ(oru_do_uri_new_val(nothing, "a", "k", value.get()), nullptr);
        EXPECT_EQ(oru_do_uri_new_val("/", nothing, "k", value.get()), nullptr);
        EXPECT_EQ(oru_do_uri_new_val("/", "a", nothing, value.get()), nullptr);
        EXPECT_EQ(oru_do_uri_new_num(nothing, "a", "k", 1), nullptr);
        EXPECT_EQ(oru_do_uri_new_num("/", nothing, "k", 1), nullptr);
        EXPECT_EQ(oru_do_uri_new_num("/", "a", nothing, 1), nullptr);
    }
    EXPECT_EQ(oru_do_uri_new_str("/", "a", "k", nullptr), nullptr);
    EXPECT_EQ(oru_do_uri_new_val("/", "a", "k", nullptr), nullptr);
}

TEST(UriBuild, ALongNameEndsTheProcess) {
    const std::string name = run_of(64);
    const std::string words = "Not enough room for ref name 64 64 " + name;
    const Value value(oru_do_value_new_int(1));
    EXPECT_FATAL(oru_do_uri_new_str("/", name.c_str(), "k", "1"), words);
    EXPECT_FATAL(oru_do_uri_new_val("/", name.c_str(), "k", value.get()), words);
    EXPECT_FATAL(oru_do_uri_new_num("/", name.c_str(), "k", 1), words);
    EXPECT_EQ(with_string("/", run_of(63).c_str(), "k", "1"), "/" + run_of(63) + ";k=1");
}

TEST(UriBuild, TextsLandInTheirClasses) {
    // "/a;k=" and the value; a long text is the string buffer's own.
    const auto asked = [](size_t length) {
        const std::string text = run_of(length - 5);
        EXPECT_EQ(with_string("/", "a", "k", text.c_str()), "/a;k=" + text);
        return classes_asked([&] { Uri(oru_do_uri_new_str("/", "a", "k", text.c_str())); });
    };
    EXPECT_EQ(asked(63), "small");
    EXPECT_EQ(asked(64), "misc");
    EXPECT_EQ(asked(127), "misc");
    EXPECT_EQ(asked(128), "");
    EXPECT_EQ(asked(1000), "");
}

TEST(UriBuild, TheParentsTextIsKeptInItsClass) {
    const auto asked = [](size_t length) {
        const std::string parent = run_of(length);
        return classes_asked([&] { Uri(oru_do_uri_new_num(parent.c_str(), "a", "k", 1)); });
    };
    EXPECT_EQ(asked(57), "small");       // 63 in all
    EXPECT_EQ(asked(63), "small misc");  // 69 in all
    EXPECT_EQ(asked(64), "misc");
    EXPECT_EQ(asked(121), "misc");  // 127 in all
    EXPECT_EQ(asked(127), "misc");
    EXPECT_EQ(asked(128), "heap");
}

TEST(UriBuild, MemoryMayRunOut) {
    for (size_t length : {1u, 100u, 600u}) {
        const std::string parent = "/" + run_of(length);
        sweep_oom(
            [&] {
                const Value value(oru_do_value_new_int(1));
                const Uri uri(oru_do_uri_new_str(parent.c_str(), "a", "k", "x/y"));
                EXPECT_TRUE(uri != nullptr || oom_hit());
                if (uri) {
                    EXPECT_EQ(text_of(uri), parent + "/a;k=x%2Fy");
                }
                const Uri other(oru_do_uri_new_val(parent.c_str(), "a", "k", value.get()));
                if (other) {
                    EXPECT_EQ(text_of(other), parent + "/a;k=1");
                }
                const Uri number(oru_do_uri_new_num(parent.c_str(), "a", "k", 1));
                if (number) {
                    EXPECT_EQ(text_of(number), parent + "/a;k=1");
                }
            },
            {.promised_deaths = {}, .at_least = 14});
    }
}

// ---- A child of a parent ----

// ";name=value" of strings.
Keys keys(std::initializer_list<std::pair<const char *, const char *>> texts = {}) {
    Keys list(oru_do_nvlist_new());
    for (const auto &[name, text] : texts) {
        const Value value(oru_do_value_new_string(text));
        oru_do_nvlist_add(list.get(), name, value.get());
    }
    return list;
}

Uri child(const Uri &parent, const char *ref, const Keys &list = keys()) {
    return Uri(oru_do_uri_new_from_parent_uri(parent.get(), name(ref).get(), list.get()));
}

TEST(UriChild, OfAParentThatWasNotParsed) {
    const Uri parent = unparsed("/a");
    TraceCapture traces;
    const Uri uri = child(parent, "b", keys({{"k", "x/y"}, {"l", ""}}));
    EXPECT_EQ(text_of(uri), "/a/b;k=x%2Fy;l=");
    EXPECT_TRUE(traces.lines().empty());
    EXPECT_EQ(model_of(uri), "a|b;k=x/y;l=");
    EXPECT_EQ(text_of(child(parent, "b")), "/a/b");
}

TEST(UriChild, NamesOfKeysAreNotEscaped) {
    const Keys list = keys({{"k/ k", "v v"}});
    EXPECT_EQ(text_of(child(unparsed("/a"), "b:c", list)), "/a/b:c;k/ k=v%20v");
    EXPECT_EQ(model_of(child(parsed("/a"), "b:c", list)), "a|b:c;k/ k=v v");
}

TEST(UriChild, AFailedParseHidesTheParentThatItKeeps) {
    const Uri parent = unparsed("/a/");
    const Uri uri = child(parent, "b");
    EXPECT_EQ(text_of(uri), "/a//b");
    TraceCapture traces;
    EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), nullptr);
    EXPECT_TRUE(traces.has(3, "Invalid uri '/a//b'"));
}

TEST(UriChild, AParseOfTheChildLeavesItsParent) {
    const Uri parent = unparsed("/a");
    const Uri uri = child(parent, "b");
    EXPECT_EQ(model_of(uri), "a|b");
    EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), parent.get());
    EXPECT_EQ(parent_of(Uri(oru_do_uri_clone(uri.get()))), "/a");
}

TEST(UriChild, RootsAddNoSlash) {
    EXPECT_EQ(text_of(child(unparsed("/"), "a")), "/a");
    EXPECT_EQ(text_of(child(unparsed("//"), "a")), "//a");
    EXPECT_EQ(text_of(child(unparsed(""), "a")), "/a");
    EXPECT_EQ(text_of(child(unparsed("/a/"), "b")), "/a//b");
}

TEST(UriChild, KeepsItsParent) {
    for (bool parse : {false, true}) {
        Uri parent = parse ? parsed("/a") : unparsed("/a");
        ORUDoUri *expected = parent.get();
        const Uri uri = child(parent, "b");
        parent.reset();
        EXPECT_EQ(oru_do_uri_get_parent_uri(uri.get()), expected);
        EXPECT_STREQ(oru_do_uri_get_uri_str(expected), "/a");
    }
}

TEST(UriChild, OfAParsedParentCountsAsParsed) {
    const Uri parent = parsed("/a;i=1");
    TraceCapture traces;
    const Uri uri = child(parent, "b", keys({{"k", "x/y"}}));
    EXPECT_EQ(text_of(uri), "/a;i=1/b;k=x%2Fy");
    EXPECT_EQ(model_of(uri), "a;i=1|b;k=x/y");
    EXPECT_EQ(segment_text(uri, 1), "b;k=x%2Fy");
    EXPECT_EQ(oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri.get(), 0)),
              oru_do_uri_get_keys(parent.get()));
    EXPECT_EQ(oru_do_uri_get_keys(child(parent, "b").get()), nullptr);
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriChild, ItsOwnSegmentEndsOneCharacterFurther) {
    // "/a/b/c": b at 3, counted to 4; c then at 6, counted to 7, though it stands at 5.
    const Uri b = child(parsed("/a"), "b");
    const Uri c = child(b, "c");
    EXPECT_EQ(text_of(c), "/a/b/c");
    EXPECT_EQ(model_of(c), "a|b|c");
    EXPECT_EQ(segment_text(c, 0), "a");
    EXPECT_EQ(segment_text(c, 1), "b/");
    EXPECT_EQ(segment_text(c, 2), "");
    const char *rest = nullptr;
    const Uri prefix(oru_do_uri_new_from_descendant(c.get(), 2, &rest));
    EXPECT_EQ(text_of(prefix), "/a/b/");
    EXPECT_STREQ(rest, "c");
    EXPECT_EQ(segment_text(parsed("/a/b/c"), 1), "b");
}

TEST(UriChild, OffsetsBehindTheTextReadNothing) {
    Uri uri = parsed("/a");
    for (int i = 0; i < 8; ++i)
        uri = child(uri, "b");
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 9);
    EXPECT_EQ(segment_text(uri, 8), "");
    const char *rest = nullptr;
    const Uri all(oru_do_uri_new_from_descendant(uri.get(), 9, &rest));
    EXPECT_EQ(text_of(all), text_of(uri));
    EXPECT_STREQ(rest, "");
}

TEST(UriChild, BehindARootWithoutSegments) {
    for (const char *root : {"/", "//"}) {
        const Uri uri = child(parsed(root), "ab", keys({{"k", "1"}}));
        EXPECT_EQ(text_of(uri), std::string(root) + "ab;k=1");
        EXPECT_EQ(model_of(uri), "ab;k=1");
        EXPECT_EQ(segment_text(uri, 0), "ab;k=1");
    }
}

TEST(UriChild, BehindTheParentOfTheRoot) {
    const Uri root = parsed("//");
    Uri above(oru_do_uri_ref(oru_do_uri_get_parent_uri(root.get())));
    ASSERT_EQ(oru_do_uri_get_segment_count(above.get()), -1);
    const Uri uri = child(above, "a", keys({{"k", "1"}}));
    EXPECT_EQ(text_of(uri), "//a;k=1");
    EXPECT_EQ(model_of(uri), "a;k=1");
}

TEST(UriChild, TenSegmentsAreTheMost) {
    const Uri tenth = child(parsed(segments_of(9)), "b", keys({{"k", "1"}}));
    EXPECT_EQ(oru_do_uri_get_segment_count(tenth.get()), 10);
    const Uri eleventh = child(tenth, "c", keys({{"k", "1"}}));
    const std::string text = segments_of(9) + "/b;k=1/c;k=1";
    EXPECT_EQ(text_of(eleventh), text);
    EXPECT_FATAL(oru_do_uri_get_segment_count(eleventh.get()),
                 "Insufficient URI MAX segments: '" + text + "'Increase URI_MAX_SEGMENTS 11/10");
}

TEST(UriChild, OfAFailedParentGoesTheTextWay) {
    const Uri parent = unparsed("/a=b");
    EXPECT_EQ(oru_do_uri_get_segment_count(parent.get()), 0);
    const Uri uri = child(parent, "c");
    EXPECT_EQ(text_of(uri), "/a=b/c");
    EXPECT_EQ(oru_do_uri_get_segment_count(uri.get()), 0);
}

TEST(UriChild, KeysThatAreNoStringsAreCollectedInEscapedForm) {
    const Uri link = unparsed("/x");
    const Value value(oru_do_value_new_mr_uri(link.get()));
    const Keys list(oru_do_nvlist_new_from_item("k", value.get()));
    const Uri uri = child(parsed("/a"), "b", list);
    EXPECT_EQ(text_of(uri), "/a/b;k=%2Fx");
    EXPECT_EQ(model_of(uri), "a|b;k=%2Fx");
    EXPECT_EQ(model_of(child(unparsed("/a"), "b", list)), "a|b;k=/x");
}

TEST(UriChild, NumbersAreCollectedAsStrings) {
    const Value value(oru_do_value_new_int(-7));
    const Keys list(oru_do_nvlist_new_from_item("k", value.get()));
    const Uri uri = child(parsed("/a"), "b", list);
    EXPECT_EQ(model_of(uri), "a|b;k=-7");
    EXPECT_NE(oru_do_uri_get_key(uri.get(), 0), value.get());
}

TEST(UriChild, AStringThatCannotBeReadGivesNoChild) {
    poolheap_fail_nth(2, 0);
    const Value value(oru_do_value_new_string("x"));
    poolheap_fail_off();
    ASSERT_NE(value, nullptr);
    const Keys list(oru_do_nvlist_new_from_item("k", value.get()));
    EXPECT_EQ(child(unparsed("/a"), "b", list), nullptr);
    EXPECT_EQ(child(parsed("/a"), "b", list), nullptr);
}

TEST(UriChild, ALongNameEndsTheProcess) {
    const std::string ref = run_of(64);
    const Uri parent = unparsed("/a");
    EXPECT_FATAL(child(parent, ref.c_str()), "Not enough room for refname 64 64 " + ref);
    EXPECT_EQ(model_of(child(parsed("/a"), run_of(63).c_str())), "a|" + run_of(63));
}

TEST(UriChild, NothingFromNull) {
    const Uri parent = unparsed("/a");
    const Name ref = name("b");
    const Keys none = keys();
    EXPECT_EQ(oru_do_uri_new_from_parent_uri(nullptr, ref.get(), none.get()), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_parent_uri(parent.get(), nullptr, none.get()), nullptr);
    EXPECT_EQ(oru_do_uri_new_from_parent_uri(parent.get(), ref.get(), nullptr), nullptr);
}

TEST(UriChild, MemoryMayRunOut) {
    const Name ref = name("b");
    for (bool parse : {false, true}) {
        const Uri parent = parse ? parsed("/a;i=1") : unparsed("/a;i=1");
        const Value number(oru_do_value_new_int(7));
        const Keys list = keys({{"k", "x/y"}});
        oru_do_nvlist_add(list.get(), "n", number.get());
        sweep_oom(
            [&] {
                const Uri uri(oru_do_uri_new_from_parent_uri(parent.get(), ref.get(), list.get()));
                EXPECT_EQ(uri == nullptr, oom_hit());
                if (uri) {
                    EXPECT_EQ(text_of(uri), "/a;i=1/b;k=x%2Fy;n=7");
                }
            },
            {.promised_deaths = {}, .at_least = 6});
    }
}

// ---- Keys of property tables ----

struct ReleaseDescriptions {
    void operator()(ORUDoProperties *object) const { oru_do_properties_deref(object); }
    void operator()(ORUDoMrMeta *object) const { oru_do_mr_meta_deref(object); }
    void operator()(ORUDoPropMeta *object) const { oru_do_prop_meta_deref(object); }
};

using Properties = std::unique_ptr<ORUDoProperties, ReleaseDescriptions>;
using MrMeta = std::unique_ptr<ORUDoMrMeta, ReleaseDescriptions>;
using PropMeta = std::unique_ptr<ORUDoPropMeta, ReleaseDescriptions>;

void set(const Properties &props, const char *name, const char *text) {
    const Value value(oru_do_value_new_string(text));
    oru_do_properties_set_value(props.get(), name, value.get());
}

void describe(const MrMeta &meta, const char *property, int32_t category, int32_t primary) {
    const PropMeta prop(oru_do_prop_meta_new(
        name(property).get(), category, primary, category == ORU_PROP_KEY ? 1 : 0, nullptr,
        ORU_DO_TYPE_STRING, name("string").get(), ORU_MULTIPLICITY_ONE, ORU_REF_NONE,
        ORU_ACCESS_READ, 0));
    oru_do_mr_meta_add_prop_meta(meta.get(), prop.get());
}

// Primary keys "k" and "j", a further key, an attribute.
MrMeta described() {
    MrMeta meta(oru_do_mr_meta_new(name("p").get(), nullptr, name("b").get(), ORU_ACCESS_READ,
                                   nullptr, nullptr));
    describe(meta, "k", ORU_PROP_KEY, 1);
    describe(meta, "other", ORU_PROP_KEY, 0);
    describe(meta, "config", ORU_PROP_CONFIG, 0);
    describe(meta, "j", ORU_PROP_KEY, 1);
    return meta;
}

Uri child(const Uri &parent, const Properties &props, const MrMeta &meta) {
    return Uri(oru_do_uri_new_from_parent_uri_props(parent.get(), name("b").get(), props.get(),
                                                    meta.get()));
}

TEST(UriChildOfProps, TakesThePrimaryKeysInTheOrderOfTheType) {
    const Properties props(oru_do_properties_new());
    for (const char *property : {"j", "config", "other", "k", "more"})
        set(props, property, (std::string("of ") + property).c_str());
    EXPECT_EQ(text_of(child(unparsed("/a"), props, described())), "/a/b;k=of%20k;j=of%20j");
    EXPECT_EQ(model_of(child(parsed("/a"), props, described())), "a|b;k=of k;j=of j");
}

TEST(UriChildOfProps, AMissingKeyIsTraced) {
    const Properties props(oru_do_properties_new());
    set(props, "k", "1");
    const Buffer text(oru_do_strbuf_new());
    oru_do_properties_to_strbuf(props.get(), 0, text.get());
    const MrMeta meta = described();
    const Uri parent = unparsed("/a");
    TraceCapture traces;
    EXPECT_EQ(child(parent, props, meta), nullptr);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{3, std::string("unable to find j in ") +
                                          oru_do_strbuf_to_string(text.get()) + "\n"}}));
}

TEST(UriChildOfProps, AKeyWithoutAValueGivesNoChild) {
    const Properties props(oru_do_properties_new());
    set(props, "k", "1");
    set(props, "j", "2");
    oru_do_properties_reset_values(props.get());
    set(props, "k", "1");
    const MrMeta meta = described();
    const Uri parent = unparsed("/a");
    TraceCapture traces;
    EXPECT_EQ(child(parent, props, meta), nullptr);
    EXPECT_TRUE(traces.lines().empty());
}

TEST(UriChildOfProps, WithoutPrimaryKeysThereIsNone) {
    const MrMeta meta(oru_do_mr_meta_new(name("p").get(), nullptr, name("b").get(), ORU_ACCESS_READ,
                                         nullptr, nullptr));
    const Properties props(oru_do_properties_new());
    EXPECT_EQ(text_of(child(unparsed("/a"), props, meta)), "/a/b");
}

TEST(UriChildOfProps, TakesEveryKeyPropertyInOrder) {
    const Properties props(oru_do_properties_new());
    set(props, "z", "1");
    set(props, "a", "x/y");
    const auto all = [&](const Uri &parent) {
        return Uri(
            oru_do_uri_new_from_parent_uri_key_props(parent.get(), name("b").get(), props.get()));
    };
    EXPECT_EQ(text_of(all(unparsed("/a"))), "/a/b;z=1;a=x%2Fy");
    EXPECT_EQ(model_of(all(parsed("/a"))), "a|b;z=1;a=x/y");
    oru_do_properties_reset_values(props.get());
    EXPECT_EQ(all(unparsed("/a")), nullptr);
    oru_do_properties_clear(props.get());
    EXPECT_EQ(text_of(all(unparsed("/a"))), "/a/b");
}

TEST(UriChildOfProps, MemoryMayRunOut) {
    const Properties props(oru_do_properties_new());
    set(props, "j", "1");
    set(props, "k", "2");
    const MrMeta meta = described();
    const Name ref = name("b");
    const Uri parent = parsed("/a");
    sweep_oom(
        [&] {
            const Uri all(
                oru_do_uri_new_from_parent_uri_key_props(parent.get(), ref.get(), props.get()));
            EXPECT_TRUE(all != nullptr || oom_hit());
            if (all) {
                EXPECT_EQ(text_of(all), "/a/b;j=1;k=2");
            }
            const Uri primary(oru_do_uri_new_from_parent_uri_props(parent.get(), ref.get(),
                                                                   props.get(), meta.get()));
            EXPECT_TRUE(primary != nullptr || oom_hit());
            if (primary) {
                EXPECT_EQ(text_of(primary), "/a/b;k=2;j=1");
            }
        },
        {.promised_deaths = {}, .at_least = 20});
}

TEST(UriChildOfProps, NullIsAsserted) {
    const Properties props(oru_do_properties_new());
    const MrMeta meta = described();
    const Name ref = name("b");
    const Uri parent = unparsed("/a");
    EXPECT_ASSERTION(
        oru_do_uri_new_from_parent_uri_props(nullptr, ref.get(), props.get(), meta.get()),
        "parent_uri");
    EXPECT_ASSERTION(
        oru_do_uri_new_from_parent_uri_props(parent.get(), nullptr, props.get(), meta.get()),
        "child_ref_name");
    EXPECT_ASSERTION(
        oru_do_uri_new_from_parent_uri_props(parent.get(), ref.get(), nullptr, meta.get()),
        "props");
    EXPECT_ASSERTION(
        oru_do_uri_new_from_parent_uri_props(parent.get(), ref.get(), props.get(), nullptr),
        "child_do_mr_meta");
    EXPECT_ASSERTION(oru_do_uri_new_from_parent_uri_key_props(nullptr, ref.get(), props.get()),
                     "parent_uri");
    EXPECT_ASSERTION(oru_do_uri_new_from_parent_uri_key_props(parent.get(), nullptr, props.get()),
                     "child_ref_name");
    EXPECT_ASSERTION(oru_do_uri_new_from_parent_uri_key_props(parent.get(), ref.get(), nullptr),
                     "props");
}

}  // namespace
