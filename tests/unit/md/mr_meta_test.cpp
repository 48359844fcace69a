#include "oru/mr_meta.h"

#include <gtest/gtest.h>
#include <oru/act_meta.h>
#include <oru/name.h>
#include <oru/prop_meta.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

using Names = std::vector<std::string>;

ORUDoMrMeta *new_mr(const char *mr = "Port", const char *version = "1.0", uint8_t access = 15,
                    ORUDoPropMetaList *props = nullptr, ORUDoMrMetaBool *flag = nullptr) {
    auto *package = oru_do_name_new("com.net");
    auto *name = oru_do_name_new(mr);
    auto *meta = package != nullptr && name != nullptr
                     ? oru_do_mr_meta_new(package, version, name, access, props, flag)
                     : nullptr;
    oru_do_name_deref(package);
    oru_do_name_deref(name);
    return meta;
}

void add_prop(ORUDoMrMeta *meta, const char *text, int32_t category, int32_t role = 0) {
    auto *name = oru_do_name_new(text);
    auto *prop = oru_do_prop_meta_new(name, category, 0, 0, nullptr, 5, name, 1, role, 2, 1);
    oru_do_mr_meta_add_prop_meta(meta, prop);
    oru_do_name_deref(name);
    oru_do_prop_meta_deref(prop);
}

TEST(MrMeta, KeepsItsFieldsAndMakesItsQualifiedName) {
    auto *props = oru_do_prop_meta_list_new();
    auto *flag = oru_do_mr_meta_bool_new(0);
    auto *meta = new_mr("Port", "1.0", 6, props, flag);
    oru_do_prop_meta_list_deref(props);
    oru_do_mr_meta_bool_deref(flag);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_mr_meta_get_pkg_name(meta)), "com.net");
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_mr_meta_get_mr_name(meta)), "Port");
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_mr_meta_get_mr_fq_name(meta)), "com.net:1.0/Port");
    EXPECT_EQ(oru_do_mr_meta_get_max_access(meta), 6);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta_list(meta), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta(meta, "reset"), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_impl_mr_meta(meta), nullptr);
    EXPECT_EQ(oru_do_mr_meta_is_lib_mr(meta), 0);
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(meta), 0);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(meta), 0);
    oru_do_mr_meta_set_is_lib_mr(meta, 1);
    EXPECT_EQ(oru_do_mr_meta_is_lib_mr(meta), 1);
    oru_do_mr_meta_deref(meta);
}

TEST(MrMeta, QualifiedNameWithoutAVersion) {
    auto *meta = new_mr("Port", nullptr);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_mr_meta_get_mr_fq_name(meta)), "com.net/Port");
    oru_do_mr_meta_deref(meta);
}

TEST(MrMeta, AccessIsReadBitByBit) {
    for (int access = 0; access < 16; ++access) {
        auto *meta = new_mr("Port", "1.0", static_cast<uint8_t>(access));
        EXPECT_EQ(oru_do_mr_meta_is_createable(meta), access / 8);
        EXPECT_EQ(oru_do_mr_meta_is_readable(meta), access / 4 % 2);
        EXPECT_EQ(oru_do_mr_meta_is_updateable(meta), access / 2 % 2);
        EXPECT_EQ(oru_do_mr_meta_is_deleteable(meta), access % 2);
        EXPECT_EQ(oru_do_mr_meta_is_oper_data(meta), access == 0);
        oru_do_mr_meta_deref(meta);
    }
}

TEST(MrMeta, SharedFlagSpeaksForAllThatHoldIt) {
    auto *flag = oru_do_mr_meta_bool_new(0);
    auto *one = new_mr("A", "1.0", 15, nullptr, flag);
    auto *other = new_mr("B", "1.0", 15, nullptr, flag);
    oru_do_mr_meta_bool_set_bool(flag, 1);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(one), 1);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(other), 1);
    oru_do_mr_meta_bool_deref(flag);
    oru_do_mr_meta_deref(one);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(other), 1);
    oru_do_mr_meta_deref(other);
}

TEST(MrMeta, FlagIsReplaced) {
    auto *first = oru_do_mr_meta_bool_new(0);
    auto *second = oru_do_mr_meta_bool_new(5);
    auto *meta = new_mr("A", "1.0", 15, nullptr, first);
    oru_do_mr_meta_bool_deref(first);
    oru_do_mr_meta_set_non_persistent_bool(meta, first);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(meta), 0);
    oru_do_mr_meta_set_non_persistent_bool(meta, second);
    oru_do_mr_meta_bool_deref(second);
    EXPECT_EQ(oru_do_mr_meta_is_non_persistent_mr(meta), 5);
    oru_do_mr_meta_set_non_persistent_bool(nullptr, second);
    oru_do_mr_meta_set_non_persistent_bool(meta, nullptr);
    EXPECT_ASSERTION(oru_do_mr_meta_is_non_persistent_mr(meta), "meta->is_non_persistent");
    oru_do_mr_meta_deref(meta);
}

struct MrProps : testing::Test {
    MrProps() {
        add_prop(meta, "id", ORU_PROP_KEY);
        add_prop(meta, "slots", ORU_PROP_REF, ORU_REF_CHILD);
        add_prop(meta, "owner", ORU_PROP_REF, ORU_REF_PARENT);
        add_prop(meta, "link", ORU_PROP_REF, ORU_REF_PEER);
        add_prop(meta, "mtu", ORU_PROP_CONFIG);
        add_prop(meta, "ab.x", ORU_PROP_CONFIG);
        add_prop(meta, "abc.x", ORU_PROP_CONFIG);
        add_prop(meta, "ab.y.z", ORU_PROP_CONFIG);
        add_prop(meta, "state", ORU_PROP_OPER);
        add_prop(meta, "ab.count", ORU_PROP_OPER);
    }
    ~MrProps() override {
        oru_do_mr_meta_deref(meta);
        oru_do_prop_meta_list_deref(out);
    }

    // What a selection added; its result is their number.
    Names added(int32_t result) {
        Names names;
        for (int32_t i = 0; i < oru_do_prop_meta_list_get_len(out); ++i) {
            names.push_back(oru_do_name_get_strname(
                oru_do_prop_meta_get_name(oru_do_prop_meta_list_get_prop_meta(out, i))));
        }
        EXPECT_EQ(result, static_cast<int32_t>(names.size()));
        oru_do_prop_meta_list_clear(out);
        return names;
    }

    ORUDoMrMeta *meta = new_mr();
    ORUDoPropMetaList *out = oru_do_prop_meta_list_new();
};

TEST_F(MrProps, AreFoundByName) {
    auto *name = oru_do_name_new("mtu");
    auto *found = oru_do_mr_meta_get_prop_meta(meta, name);
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_prop_meta_get_name(found)), "mtu");
    EXPECT_EQ(oru_do_mr_meta_get_prop_meta_str(meta, "mtu"), found);
    EXPECT_EQ(oru_do_mr_meta_get_prop_meta_str(meta, "none"), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_prop_count(meta), 10);
    oru_do_name_deref(name);
}

TEST_F(MrProps, AreSelectedByKind) {
    EXPECT_EQ(added(oru_do_mr_meta_get_all_prop_meta(meta, out)).size(), 10u);
    EXPECT_EQ(added(oru_do_mr_meta_get_key_prop_meta(meta, out)), Names{"id"});
    EXPECT_EQ(added(oru_do_mr_meta_get_child_ref_meta(meta, out)), Names{"slots"});
    EXPECT_EQ(added(oru_do_mr_meta_get_peer_ref_meta(meta, out)), Names{"link"});
}

TEST_F(MrProps, AreSelectedByGroup) {
    EXPECT_EQ(added(oru_do_mr_meta_get_cfg_prop_meta(meta, nullptr, out)),
              (Names{"mtu", "ab.x", "abc.x", "ab.y.z"}));
    EXPECT_EQ(added(oru_do_mr_meta_get_cfg_prop_meta(meta, "", out)), Names{"mtu"});
    EXPECT_EQ(added(oru_do_mr_meta_get_cfg_prop_meta(meta, "ab", out)), (Names{"ab.x", "ab.y.z"}));
    EXPECT_EQ(added(oru_do_mr_meta_get_cfg_prop_meta(meta, "a", out)), Names{});
    EXPECT_EQ(added(oru_do_mr_meta_get_oper_prop_meta(meta, nullptr, out)),
              (Names{"state", "ab.count"}));
    EXPECT_EQ(added(oru_do_mr_meta_get_oper_prop_meta(meta, "", out)), Names{"state"});
    EXPECT_EQ(added(oru_do_mr_meta_get_oper_prop_meta(meta, "ab", out)), Names{"ab.count"});
}

TEST_F(MrProps, SelectionThatIsNotWholeIsToldAsAFailure) {
    oru::test::sweep_oom([this] {
        int32_t (*const selections[])(ORUDoMrMeta *, ORUDoPropMetaList *) = {
            oru_do_mr_meta_get_all_prop_meta, oru_do_mr_meta_get_key_prop_meta,
            oru_do_mr_meta_get_child_ref_meta, oru_do_mr_meta_get_peer_ref_meta};
        const int32_t whole[] = {10, 1, 1, 1};
        for (int i = 0; i < 4; ++i) {
            const int32_t result = selections[i](meta, out);
            EXPECT_EQ(result, oru_do_prop_meta_list_get_len(out) == whole[i] ? whole[i] : -1);
            EXPECT_TRUE(result > 0 || oru::test::oom_hit());
            oru_do_prop_meta_list_clear(out);
        }
        const int32_t config = oru_do_mr_meta_get_cfg_prop_meta(meta, "ab", out);
        EXPECT_EQ(config, oru_do_prop_meta_list_get_len(out) == 2 ? 2 : -1);
        oru_do_prop_meta_list_clear(out);
        const int32_t oper = oru_do_mr_meta_get_oper_prop_meta(meta, nullptr, out);
        EXPECT_EQ(oper, oru_do_prop_meta_list_get_len(out) == 2 ? 2 : -1);
        oru_do_prop_meta_list_clear(out);
    });
}

TEST_F(MrProps, AreAddedAtAnIndex) {
    auto *name = oru_do_name_new("second");
    auto *prop = oru_do_prop_meta_new(name, ORU_PROP_KEY, 1, 1, nullptr, 5, name, 1, 0, 1, 0);
    EXPECT_EQ(oru_do_mr_meta_add_prop_meta_at_index(meta, prop, 1), 1);
    EXPECT_EQ(oru_do_mr_meta_add_prop_meta_at_index(meta, prop, 99), -1);
    EXPECT_EQ(oru_do_mr_meta_add_prop_meta(meta, prop), 12);
    EXPECT_EQ(added(oru_do_mr_meta_get_key_prop_meta(meta, out)),
              (Names{"id", "second", "second"}));
    oru_do_name_deref(name);
    oru_do_prop_meta_deref(prop);
}

TEST(MrMeta, WithoutPropertiesNothingIsFound) {
    auto *meta = new_mr();
    auto *out = oru_do_prop_meta_list_new();
    EXPECT_EQ(oru_do_mr_meta_get_prop_meta_str(meta, "a"), nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_all_prop_meta(meta, out), 0);
    oru_do_prop_meta_list_deref(out);
    oru_do_mr_meta_deref(meta);
}

TEST(MrMeta, ActionsAreReplacedAndFound) {
    auto *meta = new_mr();
    auto *name = oru_do_name_new("reset");
    auto *action = oru_do_act_meta_new(name, nullptr, nullptr, nullptr);
    auto *list = oru_do_act_meta_list_new();
    oru_do_act_meta_list_add(list, action);
    oru_do_mr_meta_set_act_meta_list(meta, list);
    oru_do_act_meta_list_deref(list);
    oru_do_mr_meta_set_act_meta_list(meta, list);  // the one that is held
    EXPECT_EQ(oru_do_mr_meta_get_act_meta_list(meta), list);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta(meta, "reset"), action);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta(meta, "none"), nullptr);
    oru_do_mr_meta_set_act_meta_list(meta, nullptr);
    EXPECT_EQ(oru_do_mr_meta_get_act_meta_list(meta), nullptr);
    oru_do_act_meta_deref(action);
    oru_do_name_deref(name);
    oru_do_mr_meta_deref(meta);
}

TEST(MrMeta, ImplementationsAreListed) {
    auto *library = new_mr("Port");
    auto *impl = new_mr("EthernetPort");
    EXPECT_EQ(oru_do_mr_meta_add_impl_mr_meta(library, impl), 1);
    oru_do_mr_meta_deref(impl);
    auto *list = oru_do_mr_meta_get_impl_mr_meta(library);
    EXPECT_EQ(oru_do_mr_meta_list_get_mr_meta(list, 0), impl);
    EXPECT_EQ(oru_do_mr_meta_add_impl_mr_meta(library, nullptr), -1);
    oru_do_mr_meta_deref(library);
}

TEST(MrMeta, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_mr_meta_get_pkg_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_mr_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_mr_fq_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_max_access(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_lib_mr(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_set_is_lib_mr(nullptr, 0), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_createable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_readable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_updateable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_deleteable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_oper_data(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_is_non_persistent_mr(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_prop_count(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_prop_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_prop_meta_str(nullptr, "a"), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_all_prop_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_key_prop_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_child_ref_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_peer_ref_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_cfg_prop_meta(nullptr, nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_oper_prop_meta(nullptr, nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_act_meta_list(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_act_meta(nullptr, "a"), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_set_act_meta_list(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_add_prop_meta(nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_add_prop_meta_at_index(nullptr, nullptr, 0), "meta");
    EXPECT_ASSERTION(oru_do_mr_meta_add_impl_mr_meta(nullptr, nullptr), "lib_meta");
    EXPECT_ASSERTION(oru_do_mr_meta_get_impl_mr_meta(nullptr), "lib_meta");
    EXPECT_ASSERTION(oru_do_mr_meta_bool_set_bool(nullptr, 1), "meta_bool");
    EXPECT_EQ(oru_do_mr_meta_ref(nullptr), nullptr);
    EXPECT_EQ(oru_do_mr_meta_bool_ref(nullptr), nullptr);
    oru_do_mr_meta_deref(nullptr);
    oru_do_mr_meta_bool_deref(nullptr);
}

TEST(MrMeta, WithoutMemoryThereIsNone) {
    auto *name = oru_do_name_new("a.name.too.long.to.be.kept.inside.of.its.record");
    oru::test::sweep_oom([name] {
        auto *meta = oru_do_mr_meta_new(name, "1.0", name, 15, nullptr, nullptr);
        EXPECT_EQ(meta == nullptr, oru::test::oom_hit());
        oru_do_mr_meta_deref(meta);
    });
    oru::test::sweep_oom([] {
        auto *flag = oru_do_mr_meta_bool_new(1);
        EXPECT_EQ(flag == nullptr, oru::test::oom_hit());
        oru_do_mr_meta_bool_deref(flag);
    });
    oru::test::sweep_oom([] {
        auto *list = oru_do_mr_meta_list_new();
        EXPECT_EQ(list == nullptr, oru::test::oom_hit());
        oru_do_mr_meta_list_deref(list);
    });
    oru_do_name_deref(name);
}

// The list of properties that cannot be made gives 0, an entry of it -1.
TEST(MrMeta, PropertyWithoutMemoryIsNotAdded) {
    auto *name = oru_do_name_new("a");
    auto *prop = oru_do_prop_meta_new(name, 2, 0, 0, nullptr, 5, name, 1, 0, 1, 0);
    const auto add = [prop](ORUDoMrMeta *meta, bool at_index) {
        return at_index ? oru_do_mr_meta_add_prop_meta_at_index(meta, prop, 0)
                        : oru_do_mr_meta_add_prop_meta(meta, prop);
    };
    for (const bool at_index : {false, true}) {
        auto *meta = new_mr();
        poolheap_fail_nth(1, 0);
        EXPECT_EQ(add(meta, at_index), 0);
        poolheap_fail_nth(2, 0);
        EXPECT_EQ(add(meta, at_index), -1);
        poolheap_fail_off();
        EXPECT_EQ(oru_do_mr_meta_get_prop_count(meta), 0);
        EXPECT_EQ(add(meta, at_index), 1);
        oru_do_mr_meta_deref(meta);
    }
    oru_do_prop_meta_deref(prop);
    oru_do_name_deref(name);
}

TEST(MrMeta, ImplementationWithoutMemoryIsNotAdded) {
    auto *library = new_mr(), *impl = new_mr("Impl");
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_mr_meta_add_impl_mr_meta(library, impl), 0);
    poolheap_fail_nth(2, 0);
    EXPECT_EQ(oru_do_mr_meta_add_impl_mr_meta(library, impl), -1);
    poolheap_fail_off();
    oru_do_mr_meta_deref(library);
    oru_do_mr_meta_deref(impl);
}

TEST(MrMeta, WithoutMemoryNothingStaysBehind) {
    oru::test::sweep_oom([] {
        auto *flag = oru_do_mr_meta_bool_new(0);
        auto *library = new_mr("Port", "1.0", 15, nullptr, flag);
        auto *impl = new_mr("Impl");
        if (library != nullptr && impl != nullptr) {
            const int32_t added = oru_do_mr_meta_add_impl_mr_meta(library, impl);
            EXPECT_TRUE(added == 1 || oru::test::oom_hit());
        }
        oru_do_mr_meta_deref(library);
        oru_do_mr_meta_deref(impl);
        oru_do_mr_meta_bool_deref(flag);
    });
}

// ---- Lists ----

struct MrMetaList : testing::Test {
    ~MrMetaList() override {
        oru_do_mr_meta_list_deref(list);
        oru_do_mr_meta_deref(a);
        oru_do_mr_meta_deref(b);
    }
    ORUDoMrMetaList *list = oru_do_mr_meta_list_new();
    ORUDoMrMeta *a = new_mr("A");
    ORUDoMrMeta *b = new_mr("B");
};

TEST_F(MrMetaList, AddsFindsWalksAndClears) {
    EXPECT_EQ(oru_do_mr_meta_list_add(list, a), 1);
    EXPECT_EQ(oru_do_mr_meta_list_add(list, b), 2);
    EXPECT_EQ(oru_do_mr_meta_list_get_len(list), 2);
    EXPECT_EQ(oru_do_mr_meta_list_get_mr_meta(list, 1), b);
    EXPECT_EQ(oru_do_mr_meta_list_get_mr_meta(list, 2), nullptr);
    EXPECT_EQ(oru_do_mr_meta_list_get_mr_meta(list, -1), nullptr);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(list, b), 1);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_mr_meta_list_iter(list, &iter);
    EXPECT_EQ(iter.coll_type, 5);
    EXPECT_NE(oru_do_mr_meta_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_mr_meta_list_get_next(&iter), a);
    EXPECT_EQ(oru_do_mr_meta_list_get_next(&iter), b);
    EXPECT_EQ(oru_do_mr_meta_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_mr_meta_list_get_next(&iter), nullptr);
    oru_do_mr_meta_list_clear(list);
    EXPECT_EQ(oru_do_mr_meta_list_get_len(list), 0);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(list, b), -1);
}

TEST_F(MrMetaList, PositionIsThatOfThisVeryObject) {
    auto *twin = new_mr("A");
    oru_do_mr_meta_list_add(list, a);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(list, twin), -1);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(list, nullptr), -1);
    EXPECT_EQ(oru_do_mr_meta_list_index_of(nullptr, a), -1);
    oru_do_mr_meta_deref(twin);
}

TEST_F(MrMetaList, NullToAddGivesMinusOne) {
    EXPECT_EQ(oru_do_mr_meta_list_add(nullptr, a), -1);
    EXPECT_EQ(oru_do_mr_meta_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_mr_meta_list_get_len(list), 0);
}

TEST_F(MrMetaList, NullIsRefusedByName) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_mr_meta_list_get_len(nullptr), "list");
    EXPECT_ASSERTION(oru_do_mr_meta_list_get_mr_meta(nullptr, 0), "list");
    EXPECT_ASSERTION(oru_do_mr_meta_list_clear(nullptr), "list");
    EXPECT_ASSERTION(oru_do_mr_meta_list_iter(nullptr, &iter), "list");
    EXPECT_ASSERTION(oru_do_mr_meta_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_MR_META_LIST");
    EXPECT_EQ(oru_do_mr_meta_list_ref(nullptr), nullptr);
    oru_do_mr_meta_list_deref(nullptr);
}

}  // namespace
