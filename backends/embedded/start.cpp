#include "start.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "report.h"

namespace embedded {

ORUEmbeddedOptions options_at(const void *given) {
    ORUEmbeddedOptions options = {};
    size_t size = 0;
    if (given == nullptr)
        return options;
    std::memcpy(&size, given, sizeof size);
    std::memcpy(&options, given, std::min(size, sizeof options));
    return options;
}

void size_pools(intptr_t elements) {
    static std::once_flag once;
    if (elements <= 0)
        return;
    std::call_once(once, [elements] {
        init_chunk_poolheap_oru_do_name(elements, 0);
        init_chunk_poolheap_oru_do_value(elements, 0);
        init_chunk_poolheap_oru_do_value_sml_misc(elements, 0);
        init_chunk_poolheap_oru_do_value_misc(elements, 0);
        init_chunk_poolheap_oru_do_uri(elements, 0);
        init_chunk_poolheap_oru_do_uri_sml_misc(elements, 0);
        init_chunk_poolheap_oru_do_uri_misc(elements, 0);
        init_chunk_poolheap_oru_do_nlist_item(elements, 0);
        init_chunk_poolheap_oru_do_nvlist_item(elements, 0);
        init_chunk_poolheap_oru_do_vlist(elements, 0);
        init_chunk_poolheap_oru_do_vlist_item(elements, 0);
        init_chunk_poolheap_oru_do_vtable_item(elements, 0);
        init_chunk_poolheap_oru_do_dtree(elements, 0);
        init_chunk_poolheap_oru_do_properties(elements, 0);
        init_chunk_poolheap_oru_do_property(elements, 0);
        init_chunk_poolheap_oru_do_strbuf(elements, 0);
        init_chunk_poolheap_oru_do_strbuf_misc(elements, 0);
        init_chunk_poolheap_oru_do_error(elements, 0);
        init_chunk_poolheap_oru_do_config_op(elements, 0);
        init_chunk_poolheap_oru_do_config_ops(elements, 0);
    });
}

namespace {

void load_folder(const char *folder) {
    const int32_t code =
        oru_md_load_dir((std::string(folder) + "/").c_str(), "", ".oru2d", nullptr);
    if (code != ORU_OK)
        throw Refusal(code, std::string(folder) + ": " + oru_do_get_err_msg(code));
}

void load_bundles(const char *const *names) {
    // the library would drop the metadata that there is
    if (names[0] == nullptr || names[0][0] == '\0')
        throw Refusal(ORU_RC_GENERAL, "the list of bundles is empty");
    const int32_t code = oru_md_load_pkg_list(names, nullptr, nullptr);
    if (code == ORU_OK)
        return;
    std::string words = "bundles";
    for (const char *const *name = names; *name != nullptr; name++)
        words += std::string(name == names ? " " : ", ") + *name;
    throw Refusal(code, words + ": " + oru_do_get_err_msg(code));
}

}  // namespace

void load_model(const ORUEmbeddedOptions &options) {
    if (options.model_dir != nullptr && options.bundles != nullptr)
        throw Refusal(ORU_RC_GENERAL, "the model is a folder or bundles, not both");
    if (options.model_dir != nullptr)
        load_folder(options.model_dir);
    if (options.bundles != nullptr)
        load_bundles(options.bundles);
    // the library keeps the address of the text
    static std::string root;
    root = options.root_type;
    oru_md_set_root_mr_type(root.c_str());
}

}  // namespace embedded
