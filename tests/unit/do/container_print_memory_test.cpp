// The text forms of containers while memory runs out: the result stays 0, the buffer tells.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/print.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/oom.h"
#include "tests/support/owned.h"

namespace {

using oru::test::Strbuf;

// Texts and lists so long that their buffers have to grow.
class ContainerPrintMemory : public testing::Test {
  protected:
    ContainerPrintMemory() {
        const std::string text(400, 't');
        for (int i = 0; i < 3; ++i) {
            const std::string name = std::string(150, 'n') + std::to_string(i);
            oru_do_nvlist_add_string(nvlist, name.c_str(), text.c_str());
            oru_do_vlist_add_string(vlist, text.c_str());
            oru_do_nlist_add_string(nlist, name.c_str());
            ORUDoName *typed = oru_do_name_new(name.c_str());
            oru_do_ntlist_add_builtin_type(ntlist, typed, 5, nullptr);
            oru_do_name_deref(typed);
            oru_do_properties_set_string(props, name.c_str(), text.c_str());
        }
        oru_do_properties_list_add(list, props);
        oru_do_properties_list_add(list, props);
    }
    ~ContainerPrintMemory() override {
        oru_do_nvlist_deref(nvlist);
        oru_do_vlist_deref(vlist);
        oru_do_nlist_deref(nlist);
        oru_do_ntlist_deref(ntlist);
        oru_do_properties_list_deref(list);
        oru_do_properties_deref(props);
        oru_do_uri_deref(uri);
    }

    template <auto to_strbuf, class Object>
    static void expect_buffer_tells(Object *object) {
        oru::test::sweep_oom(
            [=] {
                const Strbuf buf(oru_do_strbuf_new());
                if (buf == nullptr)
                    return;
                EXPECT_EQ(to_strbuf(object, 1, buf.get()), 0);
                EXPECT_EQ(oru_do_strbuf_get_err(buf.get()), oru::test::oom_hit() ? 10002 : 0);
            },
            {.promised_deaths = {}, .at_least = 3});
    }

    template <auto print, class Object>
    static void expect_prints_or_not(Object *object) {
        std::FILE *nowhere = std::fopen("/dev/null", "w");
        ASSERT_NE(nowhere, nullptr);
        std::setvbuf(nowhere, nullptr, _IONBF, 0);
        oru::test::sweep_oom([=] { EXPECT_EQ(print(nowhere, 1, object), 0); },
                             {.promised_deaths = {}, .at_least = 2});
        std::fclose(nowhere);
    }

    ORUDoNvlist *nvlist = oru_do_nvlist_new();
    ORUDoVlist *vlist = oru_do_vlist_new();
    ORUDoNlist *nlist = oru_do_nlist_new();
    ORUDoNtlist *ntlist = oru_do_ntlist_new();
    ORUDoProperties *props = oru_do_properties_new();
    ORUDoPropertiesList *list = oru_do_properties_list_new();
    ORUDoUri *uri = oru_do_uri_new(("/" + std::string(2000, 'u')).c_str());
};

TEST_F(ContainerPrintMemory, TheBufferTellsOfWhatIsMissing) {
    expect_buffer_tells<oru_do_nvlist_to_strbuf>(nvlist);
    expect_buffer_tells<oru_do_vlist_to_strbuf>(vlist);
    expect_buffer_tells<oru_do_vlist_to_strbuf_with_defaults>(vlist);
    expect_buffer_tells<oru_do_nlist_to_strbuf>(nlist);
    expect_buffer_tells<oru_do_ntlist_to_strbuf>(ntlist);
    expect_buffer_tells<oru_do_properties_to_strbuf>(props);
    expect_buffer_tells<oru_do_properties_to_strbuf_with_defaults>(props);
    expect_buffer_tells<oru_do_properties_list_to_strbuf>(list);
    expect_buffer_tells<oru_do_uri_to_strbuf>(uri);
    ORUDoProperty *entry = oru_do_properties_get_prop_at_index(props, 0);
    expect_buffer_tells<oru_do_property_to_strbuf>(entry);
    expect_buffer_tells<oru_do_property_to_strbuf_with_defaults>(entry);
}

TEST_F(ContainerPrintMemory, PrintingToAStreamSaysNothing) {
    expect_prints_or_not<oru_do_print_nvlist>(nvlist);
    expect_prints_or_not<oru_do_print_vlist>(vlist);
    expect_prints_or_not<oru_do_print_nlist>(nlist);
    expect_prints_or_not<oru_do_print_ntlist>(ntlist);
    expect_prints_or_not<oru_do_print_properties>(props);
    expect_prints_or_not<oru_do_print_properties_with_defaults>(props);
    expect_prints_or_not<oru_do_print_properties_list>(list);
    expect_prints_or_not<oru_do_print_property>(oru_do_properties_get_prop_at_index(props, 0));
    expect_prints_or_not<oru_do_print_uri>(uri);
    expect_prints_or_not<oru_do_print_value>(oru_do_vlist_get_value(vlist, 0));
}

TEST_F(ContainerPrintMemory, AListOfTextsLosesNamesButNeverItself) {
    const std::string longer(40, 'n');
    const char *const texts[] = {"x", longer.c_str(), nullptr};
    oru::test::sweep_oom(
        [&texts] {
            ORUDoNlist *made = oru_do_nlist_new_strnames(texts);
            EXPECT_EQ(oru_do_nlist_get_len(made) < 2, oru::test::oom_hit());
            oru_do_nlist_deref(made);
        },
        {.promised_deaths = {"Assertion `nlist' failed."}, .at_least = 5});
}

}  // namespace
