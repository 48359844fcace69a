// Objects from files, and pending attributes from stored texts.
#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "oru/nlist.h"
#include "oru/pr.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::Owned;
using oru::test::TraceCapture;
using oru::test::Value;
using Lines = std::vector<std::string>;
using Nlist = Owned<ORUDoNlist, oru_do_nlist_deref>;
using Properties = Owned<ORUDoProperties, oru_do_properties_deref>;
using PropertiesList = Owned<ORUDoPropertiesList, oru_do_properties_list_deref>;

class JsonFile : public testing::Test {
  protected:
    JsonFile() {
        std::string pattern = std::filesystem::temp_directory_path() / "oru_json_XXXXXX";
        const int fd = mkstemp(pattern.data());
        if (fd >= 0)
            close(fd);
        path = pattern;
    }
    ~JsonFile() override { std::filesystem::remove(path); }

    void write(const std::string &text) { std::ofstream(path) << text; }

    std::string path;
};

TEST_F(JsonFile, GivesItsObject) {
    write(R"({"%properties":{"n":5}})");
    ORUDoProperties *props = nullptr;
    const TraceCapture traces(7);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), 0);
    const Properties owned(props);
    EXPECT_EQ(oru_do_properties_get_len(props), 1);
    EXPECT_TRUE(traces.has(7, "Importing json string ({\"%properties\":{\"n\":5}})\n"));
    EXPECT_TRUE(traces.at(3).empty());

    write(R"({"%properties_list":[{"%properties":{"n":5}}]})");
    ORUDoPropertiesList *list = nullptr;
    EXPECT_EQ(oru_json_file_to_prop_list(path.c_str(), &list), 0);
    EXPECT_EQ(oru_do_properties_list_get_len(PropertiesList(list).get()), 1);

    write(R"({"%nlist":["a","b"]})");
    ORUDoNlist *names = nullptr;
    EXPECT_EQ(oru_json_file_to_nlist(path.c_str(), &names), 0);
    EXPECT_EQ(oru_do_nlist_get_len(Nlist(names).get()), 2);
}

TEST_F(JsonFile, ThatIsNotThereIsToldByItsPath) {
    std::filesystem::remove(path);
    ORUDoProperties *props = nullptr;
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), 10004);
    EXPECT_EQ(traces.at(3).back(), "Failed to read config from " + path + "\n");
    EXPECT_EQ(props, nullptr);
}

TEST_F(JsonFile, WithoutJsonGivesTheReadersError) {
    write("nothing");
    ORUDoProperties *props = nullptr;
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), ORU_JSON_ERR_PARSE);
    ASSERT_FALSE(traces.at(3).empty());
    EXPECT_EQ(traces.at(3).back().rfind("Failed to get config file. lexical error", 0), 0u);
    EXPECT_EQ(props, nullptr);
}

// Each kind goes the same way.
TEST_F(JsonFile, FailsTheSameForListsAndNames) {
    ORUDoPropertiesList *list = nullptr;
    ORUDoNlist *names = nullptr;
    write("{x");
    {
        const TraceCapture traces(3);
        EXPECT_EQ(oru_json_file_to_prop_list(path.c_str(), &list), ORU_JSON_ERR_PARSE);
        EXPECT_EQ(oru_json_file_to_nlist(path.c_str(), &names), ORU_JSON_ERR_PARSE);
        ASSERT_EQ(traces.at(3).size(), 2u);
        EXPECT_EQ(traces.at(3)[0].rfind("Failed to get config file. lexical error", 0), 0u);
        EXPECT_EQ(traces.at(3)[1], traces.at(3)[0]);
    }
    write(R"({"%properties":{"n":5}})");
    {
        const TraceCapture traces(3);
        EXPECT_EQ(oru_json_file_to_prop_list(path.c_str(), &list), 10000);
        EXPECT_EQ(oru_json_file_to_nlist(path.c_str(), &names), 10000);
        EXPECT_EQ(traces.at(3), (Lines{"Failed to get config file. unknown error\n",
                                       "Failed to get config file. unknown error\n"}));
    }
    std::filesystem::remove(path);
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_prop_list(path.c_str(), &list), 10004);
    EXPECT_EQ(oru_json_file_to_nlist(path.c_str(), &names), 10004);
    EXPECT_EQ(traces.at(3).back(), "Failed to read config from " + path + "\n");
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(names, nullptr);
}

TEST_F(JsonFile, WithoutATextCannotBeRead) {
    write("");
    ORUDoProperties *const untouched = oru_do_properties_new();
    ORUDoProperties *props = untouched;
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), 10001);
    ASSERT_EQ(traces.at(3).size(), 2u);
    EXPECT_EQ(traces.at(3)[0].rfind("Failed to read file '" + path + "': ", 0), 0u);
    EXPECT_EQ(traces.at(3)[1], "Failed to read config from " + path + "\n");
    EXPECT_EQ(props, untouched);
    oru_do_properties_deref(untouched);
}

// The code and the words are those of the error that the text left.
TEST_F(JsonFile, OfAnUnknownTypeShowsTheTag) {
    write(R"({"%nope":1})");
    ORUDoProperties *props = oru_do_properties_new();
    ORUDoProperties *const before = props;
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), ORU_JSON_ERR_UNKNOWN_TYPE);
    EXPECT_EQ(traces.at(3).back(), "Failed to get config file. %nope\":1}\n");
    EXPECT_EQ(props, nullptr);  // what the parser gave
    oru_do_properties_deref(before);
}

TEST_F(JsonFile, TracesInOrder) {
    write(R"({"%properties":{}})");
    ORUDoProperties *props = nullptr;
    const TraceCapture traces(7);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), ORU_JSON_ERR_NO_ITEMS);
    const auto lines = traces.lines();
    ASSERT_GE(lines.size(), 3u);
    const std::vector<oru::test::Trace> last(lines.end() - 3, lines.end());
    EXPECT_EQ(last,
              (std::vector<oru::test::Trace>{{7, "Importing json string ({\"%properties\":{}})\n"},
                                             {3, "error: tmp_obj->val null"},
                                             {3, "Failed to get config file. \n"}}));
}

TEST_F(JsonFile, EveryAllocationMayFail) {
    write(R"({"%properties":{"n":5}})");
    int failed = 0;
    uint64_t nth = 1;
    for (bool met = true; met; ++nth) {
        const uint64_t blocks = poolheap_live_blocks();
        ORUDoProperties *props = nullptr;
        poolheap_fail_nth(nth, 0);
        const int32_t code = oru_json_file_to_properties(path.c_str(), &props);
        poolheap_fail_off();
        met = poolheap_fail_hits() > 0;
        const bool whole = code == 0 && props != nullptr;
        // The text itself, the reader's context, or something that the text needs.
        EXPECT_TRUE(whole || code == 10002 || code == 10000 || code == ORU_JSON_ERR_MEMORY) << code;
        failed += whole ? 0 : 1;
        oru_do_properties_deref(props);
        EXPECT_EQ(poolheap_live_blocks(), blocks) << nth;
    }
    EXPECT_GT(failed, 5);
}

TEST_F(JsonFile, OfAnotherTypeHasAnUnknownError) {
    write(R"({"%nlist":["a"]})");
    ORUDoProperties *props = nullptr;
    const TraceCapture traces(3);
    EXPECT_EQ(oru_json_file_to_properties(path.c_str(), &props), 10000);
    EXPECT_EQ(traces.at(3), Lines{"Failed to get config file. unknown error\n"});
}

TEST_F(JsonFile, RequiredArgumentsAreAsserted) {
    ORUDoProperties *props = nullptr;
    ORUDoPropertiesList *list = nullptr;
    ORUDoNlist *names = nullptr;
    EXPECT_ASSERTION(oru_json_file_to_properties(nullptr, &props), "filename");
    EXPECT_ASSERTION(oru_json_file_to_properties("f", nullptr), "props");
    EXPECT_ASSERTION(oru_json_file_to_prop_list(nullptr, &list), "filename");
    EXPECT_ASSERTION(oru_json_file_to_prop_list("f", nullptr), "plist");
    EXPECT_ASSERTION(oru_json_file_to_nlist(nullptr, &names), "filename");
    EXPECT_ASSERTION(oru_json_file_to_nlist("f", nullptr), "nlist");
}

// ---- Pending attributes ----

// A holder that keeps what it is told.
struct Holder {
    ORUErrorIfc ifc{};
    std::string told;

    Holder() {
        ifc.set_error = [](ORUErrorIfc *self, int32_t code, const char *text) {
            reinterpret_cast<Holder *>(self)->told = std::to_string(code) + " " + text;
        };
    }
};

class PendingAttributes : public testing::Test {
  protected:
    int32_t read(ORUDoValue *stored) {
        ORUDoProperties *out = nullptr;
        const int32_t code =
            oru_pending_attrs_from_oru_do_value_to_properties(&holder.ifc, stored, &out);
        props.reset(out);
        return code;
    }
    int32_t read(const char *text) {
        const Value stored(oru_do_value_new_string(text));
        return read(stored.get());
    }

    Holder holder;
    Properties props;
};

TEST_F(PendingAttributes, ComeFromTheirText) {
    const TraceCapture traces(7);
    EXPECT_EQ(read(R"({"%properties":{"n":5}})"), 0);
    EXPECT_EQ(oru_do_properties_get_len(props.get()), 1);
    EXPECT_EQ(holder.told, "");
    EXPECT_TRUE(traces.has(7, "Pending attributes (json): {\"%properties\":{\"n\":5}} \n"));
}

TEST_F(PendingAttributes, OfANullThereAreNone) {
    const Value null(oru_do_value_new_null());
    for (ORUDoValue *stored : {static_cast<ORUDoValue *>(nullptr), null.get()}) {
        const TraceCapture traces(7);
        EXPECT_EQ(read(stored), 0);
        ASSERT_NE(props, nullptr);
        EXPECT_EQ(oru_do_properties_get_len(props.get()), 0);
        EXPECT_TRUE(traces.has(7, "No pending attributes in DB\n"));
    }
}

TEST_F(PendingAttributes, NeedATable) {
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(read(static_cast<ORUDoValue *>(nullptr)), 10002);
    poolheap_fail_off();
    EXPECT_EQ(props, nullptr);
}

TEST_F(PendingAttributes, NeedAString) {
    for (ORUDoValue *made : {oru_do_value_new_int(1), oru_do_value_new_enumeration("{}"),
                             oru_do_value_new_default(), oru_do_value_new_boolean(0)}) {
        const Value stored(made);
        holder.told.clear();
        EXPECT_EQ(read(stored.get()), 101);
        EXPECT_EQ(holder.told, "101 Failed to get pending attributes in json ");
        EXPECT_EQ(props, nullptr);
    }
}

// What the reader says goes to the holder by its code alone.
TEST_F(PendingAttributes, NeedATextThatReads) {
    EXPECT_EQ(read(R"({"%properties":{}})"), ORU_JSON_ERR_NO_ITEMS);
    EXPECT_EQ(holder.told, "4 Failed to get properties from json");
    EXPECT_EQ(read(R"({"%nope":{}})"), ORU_JSON_ERR_UNKNOWN_TYPE);
    EXPECT_EQ(holder.told, "8 Failed to get properties from json");
    // Another object is no error, and no table.
    holder.told.clear();
    EXPECT_EQ(read(R"({"%nlist":["a"]})"), 0);
    EXPECT_EQ(props, nullptr);
    EXPECT_EQ(holder.told, "");
}

TEST_F(PendingAttributes, EveryAllocationMayFail) {
    const Value stored(oru_do_value_new_string(R"({"%properties":{"n":5}})"));
    int failed = 0;
    uint64_t nth = 1;
    for (bool met = true; met; ++nth) {
        holder.told.clear();
        poolheap_fail_nth(nth, 0);
        const int32_t code = read(stored.get());
        poolheap_fail_off();
        met = poolheap_fail_hits() > 0;
        EXPECT_TRUE(code == 0 || code == ORU_JSON_ERR_MEMORY) << code;
        EXPECT_EQ(holder.told, code == 0 ? "" : "1 Failed to get properties from json");
        failed += code != 0 ? 1 : 0;
    }
    EXPECT_GT(failed, 5);
}

// A string that found no memory for its text reads as an empty one, which holds no table.
TEST_F(PendingAttributes, OfAStringWithoutItsTextThereAreNone) {
    poolheap_fail_nth(2, 0);
    const Value stored(oru_do_value_new_string("a text of its own"));
    poolheap_fail_off();
    ASSERT_NE(stored, nullptr);
    const TraceCapture traces(7);
    EXPECT_EQ(read(stored.get()), 0);
    EXPECT_EQ(props, nullptr);
    EXPECT_TRUE(traces.has(7, "Pending attributes (json):  \n"));
}

TEST_F(PendingAttributes, NeedJson) {
    EXPECT_EQ(read("nothing"), ORU_JSON_ERR_PARSE);
    EXPECT_EQ(holder.told, "7 Failed to get properties from json");
    EXPECT_EQ(props, nullptr);
}

}  // namespace
