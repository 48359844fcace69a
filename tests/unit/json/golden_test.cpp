// The wire form against files: every object of the corpus in every form, and what is written when
// the text was read.
//
// The text of a form stands in KIND/NAME.FORM below the folder of these files. A form whose text is
// that of another has no file of its own. What a text reads back as stands in NAME.FORM.again where
// that is another text.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>

#include "oru/json.h"
#include "oru/value.h"
#include "tests/unit/json/corpus.h"
#include "tests/unit/json/support.h"

namespace oru::test {
namespace {

struct Form {
    const char *suffix;
    const char *otherwise;  // whose text it is when it has no file
    uint32_t options;
    bool xml;
};

constexpr Form kForms[] = {
    {"tagged.json", nullptr, 0, false},
    {"compact.json", "tagged.json", ORU_JSON_OPT_COMPACT, false},
    {"hidden.json", "tagged.json", ORU_JSON_OPT_HIDE_PASSWORDS, false},
    {"compact_hidden.json", "compact.json", ORU_JSON_OPT_COMPACT | ORU_JSON_OPT_HIDE_PASSWORDS,
     false},
    {"vlist.json", "tagged.json", ORU_JSON_OPT_VLIST, false},
    {"compact_vlist.json", "compact.json", ORU_JSON_OPT_COMPACT | ORU_JSON_OPT_VLIST, false},
    {"bits.json", "tagged.json", ORU_JSON_OPT_BITS, false},
    {"compact_bits.json", "compact.json", ORU_JSON_OPT_COMPACT | ORU_JSON_OPT_BITS, false},
    {"xml", nullptr, 0, true},
    {"plain.xml", "xml", ORU_DO_OPT_PLAIN_XML, true},
    {"hidden.xml", "xml", ORU_DO_OPT_HIDE_SECRETS, true},
};

// The forms that are read again.
constexpr const char *kRead[] = {"tagged.json", "compact.json", "vlist.json", "compact_vlist.json"};

const Form &form_of(const std::string &suffix) {
    const Form *form = kForms;
    while (form->suffix != suffix)
        ++form;
    return *form;
}

// Gives its object back.
class Made {
  public:
    explicit Made(const Specimen &specimen) : kind_(*specimen.kind), object_(specimen.make()) {}
    Made(const Made &) = delete;
    Made &operator=(const Made &) = delete;
    ~Made() { kind_.release(object_); }

    std::string in(const Form &form) const {
        const auto write = form.xml ? kind_.xml : kind_.json;
        return written([&](ORUDoStrbuf *buf) { return write(object_, buf, form.options); });
    }

  private:
    const Kind &kind_;
    void *object_;
};

std::string file_of(const Specimen &specimen, const std::string &suffix) {
    return std::string(specimen.kind->name) + "/" + specimen.name + "." + suffix;
}

// A file without the line feed at its end.
std::optional<std::string> text_of(const std::string &file) {
    std::ifstream in(ORU_GOLDEN_DIR "/" + file, std::ios::binary);
    if (!in.is_open())
        return std::nullopt;
    std::stringstream all;
    all << in.rdbuf();
    std::string text = all.str();
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

std::string expected(const Specimen &specimen, const Form &form) {
    const auto text = text_of(file_of(specimen, form.suffix));
    if (text)
        return *text;
    return form.otherwise != nullptr ? expected(specimen, form_of(form.otherwise))
                                     : "no file " + file_of(specimen, form.suffix);
}

class Golden : public testing::TestWithParam<Specimen> {};

TEST_P(Golden, IsWrittenAsItsFilesTell) {
    const Made object(GetParam());
    for (const Form &form : kForms) {
        if (!form.xml || GetParam().kind->xml != nullptr) {
            EXPECT_EQ(object.in(form), expected(GetParam(), form)) << form.suffix;
        }
    }
}

TEST_P(Golden, ReadsBackAsItWasWrittenOrAsItsFilesTell) {
    if (GetParam().kind->read == nullptr)
        return;
    for (const std::string suffix : kRead) {
        const Form &form = form_of(suffix);
        if (form.options >= ORU_JSON_OPT_VLIST && !text_of(file_of(GetParam(), suffix)))
            continue;
        const std::string text = expected(GetParam(), form);
        const auto other = text_of(file_of(GetParam(), suffix + ".again"));
        EXPECT_NE(other, text) << "is no exception";
        EXPECT_EQ(written_again(*GetParam().kind, text, form.options), other.value_or(text))
            << suffix;
    }
}

// A file may tell only what its form does not share with another.
TEST_P(Golden, HasNoFileTwice) {
    for (const Form &form : kForms) {
        const auto text = text_of(file_of(GetParam(), form.suffix));
        if (text && form.otherwise != nullptr) {
            EXPECT_NE(*text, expected(GetParam(), form_of(form.otherwise))) << form.suffix;
        }
    }
}

std::string test_name(const testing::TestParamInfo<Specimen> &info) {
    return std::string(info.param.kind->name) + "__" + info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, Golden, testing::ValuesIn(corpus()), test_name);

TEST(GoldenFiles, EveryFileBelongsToAnObject) {
    std::set<std::string> known;
    for (const Specimen &specimen : corpus()) {
        for (const Form &form : kForms)
            known.insert(file_of(specimen, form.suffix));
        for (const char *suffix : kRead)
            known.insert(file_of(specimen, std::string(suffix) + ".again"));
    }
    for (const auto &entry : std::filesystem::recursive_directory_iterator(ORU_GOLDEN_DIR)) {
        if (entry.is_regular_file()) {
            const std::string file =
                std::filesystem::relative(entry.path(), ORU_GOLDEN_DIR).string();
            EXPECT_EQ(known.count(file), 1u) << file;
        }
    }
}

}  // namespace
}  // namespace oru::test
