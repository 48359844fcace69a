#include "oru/event.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdint>
#include <memory>
#include <string>

#include "oru/properties.h"
#include "oru/xml.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"
#include "tests/support/printed.h"

namespace {

using oru::test::Name;
using oru::test::Uri;
using Event = std::unique_ptr<ORUDoEvent, oru::test::Deref<oru_do_event_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, oru::test::Deref<oru_do_properties_deref>>;

class EventTest : public testing::Test {
  protected:
    EventTest() { oru_do_properties_set_int(info.get(), "n", 5); }

    Event full() {
        return Event(
            oru_do_event_new_2(package.get(), "1.0", name.get(), uri.get(), 17, 3, info.get()));
    }
    Event bare() { return Event(oru_do_event_new(name.get(), nullptr, 0, 0, nullptr)); }
    static std::string text_of(const Event &event, int32_t tabs = 0) {
        return oru::test::printed<oru_do_event_to_strbuf>(event.get(), tabs);
    }
    static std::string xml_of(const Event &event, const char *prefix, const char *wrapper) {
        const oru::test::Strbuf xml(oru_do_strbuf_new());
        EXPECT_EQ(oru_do_event_to_xml(prefix, wrapper, event.get(), xml.get()), 0);
        return oru_do_strbuf_to_string(xml.get());
    }

    Name package{oru_do_name_new("p")};
    Name name{oru_do_name_new("e")};
    Uri uri{oru_do_uri_new("/a;k=1")};
    Properties info{oru_do_properties_new()};
};

TEST_F(EventTest, KeepsWhatItIsMadeOf) {
    const Event event(
        oru_do_event_new_2(package.get(), "1.0", name.get(), uri.get(), INT64_MIN, -2, info.get()));
    EXPECT_EQ(oru_do_event_get_pkg_name(event.get()), package.get());
    EXPECT_STREQ(oru_do_event_get_pkg_vs(event.get()), "1.0");
    EXPECT_EQ(oru_do_event_get_name(event.get()), name.get());
    EXPECT_EQ(oru_do_event_get_uri(event.get()), uri.get());
    EXPECT_EQ(oru_do_event_get_event_time(event.get()), INT64_MIN);
    EXPECT_EQ(oru_do_event_get_severity(event.get()), -2);
    EXPECT_EQ(oru_do_event_get_info(event.get()), info.get());
}

TEST_F(EventTest, TheShortFormHasNoPackage) {
    const Event event(oru_do_event_new(name.get(), uri.get(), 17, 3, info.get()));
    EXPECT_EQ(oru_do_event_get_pkg_name(event.get()), nullptr);
    EXPECT_EQ(oru_do_event_get_pkg_vs(event.get()), nullptr);
    EXPECT_EQ(oru_do_event_get_name(event.get()), name.get());
    EXPECT_EQ(oru_do_event_get_event_time(event.get()), 17);
    EXPECT_EQ(oru_do_event_get_severity(event.get()), 3);
}

TEST_F(EventTest, TheVersionIsCopied) {
    char version[] = "1.0";
    const Event event(
        oru_do_event_new_2(package.get(), version, name.get(), nullptr, 0, 0, nullptr));
    version[0] = '2';
    EXPECT_STREQ(oru_do_event_get_pkg_vs(event.get()), "1.0");
}

TEST_F(EventTest, TheQualifiedNameIsMadeOnce) {
    const Event event = full();
    const char *first = oru_do_event_get_fqn_event_name(event.get());
    EXPECT_STREQ(first, "p:1.0/e");
    EXPECT_EQ(oru_do_event_get_fqn_event_name(event.get()), first);
}

TEST_F(EventTest, WithoutAPartThereIsNoQualifiedName) {
    EXPECT_EQ(oru_do_event_get_fqn_event_name(bare().get()), nullptr);
    const Event no_version(
        oru_do_event_new_2(package.get(), nullptr, name.get(), nullptr, 0, 0, nullptr));
    EXPECT_EQ(oru_do_event_get_fqn_event_name(no_version.get()), nullptr);
    const Event no_package(oru_do_event_new_2(nullptr, "1.0", name.get(), nullptr, 0, 0, nullptr));
    EXPECT_EQ(oru_do_event_get_fqn_event_name(no_package.get()), nullptr);
    const Event no_name(oru_do_event_new_2(package.get(), "1.0", nullptr, nullptr, 0, 0, nullptr));
    EXPECT_EQ(oru_do_event_get_fqn_event_name(no_name.get()), nullptr);
}

TEST_F(EventTest, PrintsItsParts) {
    EXPECT_EQ(text_of(Event()), "");
    EXPECT_EQ(text_of(full(), 2), "\t\tEvent(p:1.0/e):/a;k=1-17-3\n{ n : 5 }\n\t\t}\n");
    EXPECT_EQ(text_of(bare()), "Event(e):-0-0\n\n}\n");
}

TEST_F(EventTest, TheSlashStandsWithTheVersion) {
    const Event no_version(
        oru_do_event_new_2(package.get(), nullptr, name.get(), nullptr, -1, -2, nullptr));
    EXPECT_EQ(text_of(no_version), "Event(p:e):--1--2\n\n}\n");
    const Event no_package(oru_do_event_new_2(nullptr, "1.0", name.get(), nullptr, 0, 0, nullptr));
    EXPECT_EQ(text_of(no_package), "Event(1.0/e):-0-0\n\n}\n");
}

TEST_F(EventTest, WithoutInfoTwoNewlinesFollowEachOther) {
    const Event event(
        oru_do_event_new_2(package.get(), "1.0", name.get(), uri.get(), 17, 3, nullptr));
    EXPECT_EQ(text_of(event, 1), "\tEvent(p:1.0/e):/a;k=1-17-3\n\n\t}\n");
}

TEST_F(EventTest, TheQualifiedNameLeavesThePrintedFormAlone) {
    const Event event = full();
    oru_do_event_get_fqn_event_name(event.get());
    EXPECT_EQ(text_of(event), "Event(p:1.0/e):/a;k=1-17-3\n{ n : 5 }\n}\n");
}

TEST_F(EventTest, ItsPartsLiveAsLongAsItself) {
    Event event = full();
    const Event shared(oru_do_event_ref(event.get()));
    event.reset();
    package.reset();
    name.reset();
    uri.reset();
    info.reset();
    EXPECT_EQ(text_of(shared), "Event(p:1.0/e):/a;k=1-17-3\n{ n : 5 }\n}\n");
    EXPECT_STREQ(oru_do_event_get_fqn_event_name(shared.get()), "p:1.0/e");
}

struct EventImage {
    ORUDoName *pkg_name;
    char *pkg_vs;
    ORUDoName *name;
    ORUDoUri *uri;
    ORUDoStrbuf *fqn;
    ORUDoProperties *info;
    int64_t event_time;
    uint32_t ref_count;
    int32_t severity;
};

TEST_F(EventTest, TheRecordHasItsFieldsInOrder) {
    const Event event = full();
    const auto &image = *reinterpret_cast<EventImage *>(event.get());
    EXPECT_EQ(image.pkg_name, package.get());
    EXPECT_STREQ(image.pkg_vs, "1.0");
    EXPECT_EQ(image.name, name.get());
    EXPECT_EQ(image.uri, uri.get());
    EXPECT_EQ(image.fqn, nullptr);
    EXPECT_EQ(image.info, info.get());
    EXPECT_EQ(image.event_time, 17);
    EXPECT_EQ(image.ref_count, 1u);
    EXPECT_EQ(image.severity, 3);
    const char *qualified = oru_do_event_get_fqn_event_name(event.get());
    EXPECT_EQ(qualified, oru_do_strbuf_to_string(image.fqn));
}

TEST_F(EventTest, HasAnElementWithItsPartsInOrder) {
    EXPECT_EQ(xml_of(full(), nullptr, nullptr),
              "<event><name>e</name><uri>/a;k=1</uri><time>17</time><severity>3</severity>"
              "<info><properties><n type=\"int\">5</n></properties></info></event>");
    EXPECT_EQ(
        xml_of(full(), "x:", "w"),
        "<x:w><x:name>e</x:name><x:uri>/a;k=1</x:uri><x:time>17</x:time>"
        "<x:severity>3</x:severity><x:info><x:properties><x:n type=\"int\">5</x:n></x:properties>"
        "</x:info></x:w>");
    EXPECT_EQ(xml_of(bare(), nullptr, nullptr),
              "<event><name>e</name><uri></uri><time>0</time><severity>0</severity><info></info>"
              "</event>");
}

TEST_F(EventTest, NameAndUriAreNotEscaped) {
    const Name odd(oru_do_name_new("a<b"));
    const Uri odd_uri(oru_do_uri_new("/a;k=<&>"));
    const Event event(oru_do_event_new(odd.get(), odd_uri.get(), 0, 0, nullptr));
    EXPECT_EQ(xml_of(event, nullptr, nullptr),
              "<event><name>a<b</name><uri>/a;k=<&></uri><time>0</time><severity>0</severity>"
              "<info></info></event>");
}

TEST_F(EventTest, RequiredArgumentsAreAsserted) {
    const Event event = full();
    EXPECT_ASSERTION(oru_do_event_get_pkg_name(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_pkg_vs(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_name(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_uri(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_event_time(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_severity(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_info(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_get_fqn_event_name(nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_to_strbuf(event.get(), 0, nullptr), "strbuf");
    const Event nameless(oru_do_event_new(nullptr, uri.get(), 0, 0, nullptr));
    const oru::test::Strbuf text(oru_do_strbuf_new());
    EXPECT_ASSERTION(oru_do_event_to_strbuf(nameless.get(), 0, text.get()), "name");
    EXPECT_ASSERTION(oru_do_event_to_xml(nullptr, nullptr, nameless.get(), text.get()), "name");
    EXPECT_ASSERTION(oru_do_event_to_xml(nullptr, nullptr, nullptr, nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_to_xml(nullptr, nullptr, event.get(), nullptr), "strbuf");
    EXPECT_EQ(oru_do_event_ref(nullptr), nullptr);
    oru_do_event_deref(nullptr);
}

// ---- Memory ----

class EventMemory : public EventTest {};

TEST_F(EventMemory, AnEventIsWholeOrNone) {
    oru::test::sweep_oom(
        [this] {
            const Event event = full();
            EXPECT_EQ(event == nullptr, oru::test::oom_hit());
            const Event unnamed(oru_do_event_new(name.get(), uri.get(), 17, 3, info.get()));
            EXPECT_TRUE(unnamed != nullptr || oru::test::oom_hit());
        },
        {.promised_deaths = {}, .at_least = 3});
}

// The parts together do not fit into a buffer's first storage.
TEST_F(EventMemory, AQualifiedNameThatIsNotWholeIsNotKept) {
    const std::string version(300, '1');
    const std::string whole = "p:" + version + "/e";
    oru::test::sweep_oom(
        [&] {
            const Event event(oru_do_event_new_2(package.get(), version.c_str(), name.get(),
                                                 nullptr, 0, 0, nullptr));
            if (event == nullptr)
                return;
            const char *qualified = oru_do_event_get_fqn_event_name(event.get());
            EXPECT_EQ(qualified == nullptr, oru::test::oom_hit());
            EXPECT_TRUE(qualified == nullptr || qualified == whole);
        },
        {.promised_deaths = {}, .at_least = 5});
}

TEST_F(EventMemory, TheNextCallMakesTheQualifiedName) {
    const Event event = full();
    for (const uint64_t nth : {1, 2}) {  // the buffer, and its storage
        poolheap_fail_nth(nth, 0);
        EXPECT_EQ(oru_do_event_get_fqn_event_name(event.get()), nullptr);
        poolheap_fail_off();
    }
    EXPECT_STREQ(oru_do_event_get_fqn_event_name(event.get()), "p:1.0/e");
}

TEST_F(EventMemory, TheBufferTellsOfWhatIsMissing) {
    const std::string version(300, '1');
    const Event event(oru_do_event_new_2(package.get(), version.c_str(), name.get(), uri.get(), 17,
                                         3, info.get()));
    oru::test::sweep_oom(
        [&event] {
            const oru::test::Strbuf text(oru_do_strbuf_new());
            if (text == nullptr)
                return;
            EXPECT_EQ(oru_do_event_to_strbuf(event.get(), 1, text.get()), 0);
            EXPECT_EQ(oru_do_strbuf_get_err(text.get()), oru::test::oom_hit() ? 10002 : 0);
        },
        {.promised_deaths = {}, .at_least = 3});
}

}  // namespace
