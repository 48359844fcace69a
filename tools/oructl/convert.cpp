#include "convert.h"

#include <algorithm>
#include <memory>
#include <new>

#include "handles.h"
#include "object_text.h"
#include "terminal_text.h"
#include "wire_kinds.h"
#include "xml_text.h"

namespace oructl {
namespace {

using Context = std::unique_ptr<ORUDoJsonCtxData, Release<oru_do_json_delete_ctx_data>>;

// What the reader's own codes mean.
std::string failure_words(ORUDoError *error) {
    static constexpr const char *kWords[] = {
        nullptr,
        "memory ran out",
        nullptr,
        nullptr,
        "an empty object, which does not read",
        "not the type that is expected there",
        "an array in an object that takes none",
        nullptr,
        "a tag that is not known",
        "a second object took the place of the first",
    };
    const int32_t code = oru_do_error_get_code(error);
    if (code >= 0 && code <= ORU_JSON_ERR_REPLACED && kWords[code] != nullptr)
        return kWords[code];
    return error_words(error);
}

// The attribute for null values that the library leaves to its caller.
void declare_null_namespace(std::string &xml) {
    if (xml.find("xsi:null=") == std::string::npos)
        return;
    const size_t at = xml.find_first_of(" >/", xml.find('<') + 1);
    xml.insert(at, " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
}

class Converter {
  public:
    Converter(const SourceText &source, const ConvertOptions &options)
        : source_(source), options_(options) {}

    Converted convert() {
        const JsonTree tree(source_);
        for (const JsonNode *document : tree.documents())
            convert(*document);
        if (tree.fault())
            out_.faults.push_back(*tree.fault());
        return std::move(out_);
    }

  private:
    void fault(const JsonNode &document, const std::string &words) {
        out_.faults.push_back(source_.fault(document.begin, words));
    }

    void convert(const JsonNode &document) {
        const CheckedDocument checked = check_document(source_, document, options_.wire);
        out_.faults.insert(out_.faults.end(), checked.faults.begin(), checked.faults.end());
        if (!checked.readable)
            return;
        const Context ctx(oru_do_json_parse(checked.text.data(),
                                            static_cast<int32_t>(checked.text.size()),
                                            expected_code(checked.form)));
        if (!ctx)
            throw std::bad_alloc();
        if (ctx->err != nullptr)
            tell_failure(document, checked, ctx->err);
        if (ctx->completed_obj != nullptr)
            write(document, kind_of(checked.form), ctx->completed_obj);
        else if (ctx->err == nullptr && checked.faults.empty())
            fault(document, "this gives no object");
    }

    // What the check told already the reader tells with fewer words, but it alone computes.
    void tell_failure(const JsonNode &document, const CheckedDocument &checked, ORUDoError *error) {
        const int32_t code = oru_do_error_get_code(error);
        const bool computed = code < 0 || code > ORU_JSON_ERR_REPLACED;
        if (computed && checked.expression != std::string::npos)
            out_.faults.push_back(source_.fault(
                checked.expression, "an expression has no good value: " + failure_words(error)));
        else if (computed || code == ORU_JSON_ERR_MEMORY || checked.faults.empty())
            fault(document, failure_words(error));
    }

    void write(const JsonNode &document, const Kind &kind, void *object) {
        const Buffer buf(oru_do_strbuf_new());
        if (!buf)
            throw std::bad_alloc();
        switch (options_.form) {
            case OutputForm::json:
                kind.to_json(object, buf.get(), 0);
                break;
            case OutputForm::compact:
                kind.to_json(object, buf.get(), ORU_JSON_OPT_COMPACT);
                break;
            case OutputForm::xml:
                if (kind.to_xml == nullptr) {
                    fault(document, std::string(kind.tag) + " has no XML form");
                    return;
                }
                kind.to_xml(object, buf.get(), options_.indent);
                break;
            case OutputForm::text:
                kind.to_text(object, buf.get(), std::max(options_.indent, 0));
                break;
        }
        if (oru_do_strbuf_get_err(buf.get()) != ORU_OK)
            throw std::bad_alloc();
        take(document, oru_do_strbuf_to_string(buf.get()));
    }

    // Writers put names as they stand, which not every text survives.
    void take(const JsonNode &document, std::string text) {
        if (options_.form == OutputForm::xml) {
            text.erase(0, text.find('<'));
            declare_null_namespace(text);
            if (const std::string words = xml_fault(text); !words.empty()) {
                fault(document, "no XML comes of it: " + words);
                return;
            }
        } else if (options_.form != OutputForm::text && !is_json(text)) {
            fault(document,
                  "no JSON comes of it: names, addresses and labels are written as they "
                  "stand");
            return;
        }
        out_.text += options_.form == OutputForm::xml ? shown_in_xml(text) : shown(text);
        if (!text.ends_with('\n'))
            out_.text += '\n';
    }

    const SourceText &source_;
    const ConvertOptions &options_;
    Converted out_;
};

}  // namespace

Converted convert(const SourceText &source, const ConvertOptions &options) {
    return Converter(source, options).convert();
}

}  // namespace oructl
