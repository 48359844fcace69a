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
    Reader(LoadedFiles &files, Progress &progress) : files_(files), progress_(progress) {}

    void read(const std::string &file) {
        const SourceText source = SourceText::read(file);
        source_ = &source;
        files_.names.push_back(file);
        const JsonTree tree(source, [this](const JsonNode &list, const JsonNode &element) {
            return take(list, element);
        });
        for (const JsonNode *document : tree.documents())
            read_document(*document);
        if (tree.fault())
            files_.faults.push_back(*tree.fault());
    }

  private:
    void fault(size_t offset, const std::string &words) {
        files_.faults.push_back(source_->fault(offset, words));
    }

    static bool is_list(const JsonNode &payload) {
        const Form *form = find_form(payload.key);
        return form != nullptr && form->is("%properties_list");
    }

    bool take(const JsonNode &list, const JsonNode &element) {
        if (!is_list(list))
            return false;
        if (progress_.is_due())
            progress_.show("reading " + source_->file() + ": " +
                           std::to_string(100 * element.end / source_->content().size()) + " %");
        read_resource(element, {.type = "properties", .show_secrets = true});
        return true;
    }

    // What is beside the elements of a list.
    void read_document(const JsonNode &document) {
        const WireOptions options{.type = {}, .show_secrets = true};
        const JsonNode *payload = document.first;
        if (document.kind != JsonNode::kObject || payload == nullptr || !is_list(*payload))
            return read_resource(document, options);
        const bool is_empty = payload->kind == JsonNode::kArray && payload->first == nullptr;
        if (!is_empty || payload->next != nullptr)
            take_faults(check_document(*source_, document, options));
    }

    void take_faults(const CheckedDocument &checked) {
        files_.faults.insert(files_.faults.end(), checked.faults.begin(), checked.faults.end());
    }

    void read_resource(const JsonNode &node, const WireOptions &options) {
        const CheckedDocument checked = check_document(*source_, node, options);
        take_faults(checked);
        if (!checked.readable || !checked.faults.empty())
            return;
        if (checked.form == nullptr || !checked.form->is("%properties"))
            return fault(node.begin, "resources stand in {\"%properties_list\":[...]}");
        const Context ctx(oru_do_json_parse(checked.text.data(),
                                            static_cast<int32_t>(checked.text.size()),
                                            expected_code(checked.form)));
        if (!ctx)
            throw std::bad_alloc();
        if (ctx->completed_obj == nullptr)
            return fault(node.begin, "this does not read");
        add(node, static_cast<ORUDoProperties *>(ctx->completed_obj));
    }

    void add(const JsonNode &node, ORUDoProperties *props) {
        const std::string text = text_in(props, ORU_DO_NAME_URI);
        if (text.empty())
            return fault(node.begin, "a resource without \"_uri\", its address");
        try {
            const Fault place = source_->fault(node.begin, "");
            LoadedResource resource{Properties(oru_do_properties_ref(props)),
                                    read_address(text),
                                    text_in(props, ORU_DO_NAME_MR),
                                    files_.names.size() - 1,
                                    place.line,
                                    place.column};
            // large, and told apart from the attributes
            oru_do_properties_remove_by_name(props, ORU_DO_NAME_URI);
            if (!resource.type.empty())
                oru_do_properties_remove_by_name(props, ORU_DO_NAME_MR);
            files_.resources.push_back(std::move(resource));
        } catch (const Failure &failure) {
            fault(node.begin, failure.what());
        }
    }

    LoadedFiles &files_;
    Progress &progress_;
    const SourceText *source_ = nullptr;
};

void check_once(LoadedFiles &files) {
    std::unordered_map<std::string_view, const LoadedResource *> known;
    for (const LoadedResource &resource : files.resources) {
        const auto [at, is_new] = known.emplace(resource.address.path, &resource);
        if (is_new)
            continue;
        const Fault first = files.fault(*at->second, "");
        files.faults.push_back(files.fault(resource, in_quotes(resource.address.path) +
                                                         " stands in " + first.file + ":" +
                                                         std::to_string(first.line) + " already"));
    }
}

}  // namespace

Fault LoadedFiles::fault(const LoadedResource &resource, std::string words) const {
    return {.file = names[resource.file],
            .line = resource.line,
            .element = {},
            .words = std::move(words),
            .column = resource.column};
}

LoadedFiles read_resources(const std::vector<std::string> &files, Progress &progress) {
    LoadedFiles loaded;
    Reader reader(loaded, progress);
    for (const std::string &file : files)
        reader.read(file);
    check_once(loaded);
    std::ranges::stable_sort(loaded.resources, {},
                             [](const LoadedResource &resource) { return resource.address.depth; });
    return loaded;
}

}  // namespace oructl
