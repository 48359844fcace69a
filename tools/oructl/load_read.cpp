#include "load_read.h"

#include <algorithm>
#include <unordered_map>

#include "database.h"
#include "fault_words.h"
#include "json_tree.h"
#include "wire_check.h"
#include "wire_kinds.h"

namespace oructl {
namespace {

using Context = std::unique_ptr<ORUDoJsonCtxData, Release<oru_do_json_delete_ctx_data>>;

std::string text_in(ORUDoProperties *props, const char *name) {
    ORUDoValue *const value = oru_do_properties_get_value(props, name);
    if (value == nullptr)
        return "";
    if (ORUDoUri *uri = oru_do_value_get_uri(value))
        return oru_do_uri_get_uri_str(uri);
    int32_t status = ORU_OK;
    const char *text = oru_do_value_get_string(value, &status);
    return status == ORU_OK && text != nullptr ? text : "";
}

class Reader {
  public:
    explicit Reader(LoadedFiles &files) : files_(files) {}

    void read(const std::string &file) {
        source_ =
            files_.sources.emplace_back(std::make_unique<SourceText>(SourceText::read(file))).get();
        const JsonTree tree(*source_);
        for (const JsonNode *document : tree.documents())
            read_document(*document);
        if (tree.fault())
            files_.faults.push_back(*tree.fault());
    }

  private:
    void fault(size_t offset, const std::string &words) {
        files_.faults.push_back(source_->fault(offset, words));
    }

    void read_document(const JsonNode &document) {
        const CheckedDocument checked =
            check_document(*source_, document, {.type = {}, .show_secrets = true});
        files_.faults.insert(files_.faults.end(), checked.faults.begin(), checked.faults.end());
        if (!checked.readable || !checked.faults.empty())
            return;
        const bool is_list = checked.form != nullptr && checked.form->is("%properties_list");
        const bool is_one = checked.form != nullptr && checked.form->is("%properties");
        if (!is_list && !is_one)
            return fault(document.begin, "resources stand in {\"%properties_list\":[...]}");
        const Context ctx(oru_do_json_parse(checked.text.data(),
                                            static_cast<int32_t>(checked.text.size()),
                                            expected_code(checked.form)));
        if (!ctx)
            throw std::bad_alloc();
        if (ctx->completed_obj == nullptr)
            return fault(document.begin, "this does not read");
        if (is_one)
            return add(document, static_cast<ORUDoProperties *>(ctx->completed_obj));
        const JsonNode *node = document.first->first;
        EachProperties each(static_cast<ORUDoPropertiesList *>(ctx->completed_obj));
        for (ORUDoProperties *props = each(); props != nullptr && node != nullptr; props = each()) {
            add(*node, props);
            node = node->next;
        }
    }

    void add(const JsonNode &node, ORUDoProperties *props) {
        const std::string text = text_in(props, ORU_DO_NAME_URI);
        if (text.empty())
            return fault(node.begin, "a resource without \"_uri\", its address");
        try {
            LoadedResource resource{Properties(oru_do_properties_ref(props)), read_address(text),
                                    text_in(props, ORU_DO_NAME_MR), source_, node.begin};
            files_.resources.push_back(std::move(resource));
        } catch (const Failure &failure) {
            fault(node.begin, failure.what());
        }
    }

    LoadedFiles &files_;
    const SourceText *source_ = nullptr;
};

void check_once(LoadedFiles &files) {
    std::unordered_map<std::string_view, const LoadedResource *> known;
    for (const LoadedResource &resource : files.resources) {
        const auto [at, is_new] = known.emplace(resource.address.path, &resource);
        if (is_new)
            continue;
        const Fault first = at->second->source->fault(at->second->offset, "");
        files.faults.push_back(resource.source->fault(
            resource.offset, in_quotes(resource.address.path) + " stands in " + first.file + ":" +
                                 std::to_string(first.line) + " already"));
    }
}

}  // namespace

LoadedFiles read_resources(const std::vector<std::string> &files) {
    LoadedFiles loaded;
    Reader reader(loaded);
    for (const std::string &file : files)
        reader.read(file);
    check_once(loaded);
    std::ranges::stable_sort(loaded.resources, {},
                             [](const LoadedResource &resource) { return resource.address.depth; });
    return loaded;
}

}  // namespace oructl
