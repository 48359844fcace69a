// Any text as a document over the sample model, and its walk over a back end that makes up rows for
// every address. The first bytes choose how the back end answers, how the walk is cut into batches
// and what goes wrong on the way; the rest is the document.
#include <oru/dtl.h>
#include <oru/dtree.h>
#include <oru/error.h>
#include <oru/md.h>
#include <oru/rc.h>
#include <oruplatform/poolheap.h>

#include <string>

#include "tests/fuzz/dtl_fuzz.h"
#include "tests/fuzz/no_locks.h"

namespace {

using namespace oru::test;

using Tree = std::unique_ptr<ORUDtlNode, Deref<oru_dtl_tree_delete>>;

// No element is read deeper; what is read by metadata adds no more than the model has types.
constexpr int kMostLevels = 64;

void load_model() {
    static const bool loaded = [] {
        ORUMdPkgBundle *bundle = nullptr;
        CHECK(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle) == 0);
        return true;
    }();
    CHECK(loaded);
}

// ---- What holds of every tree ----

void look_at(ORUDtlNode *node, int level) {
    CHECK(level < kMostLevels);
    CHECK(node->name != nullptr && node->prop_name != nullptr);
    CHECK(node->type >= ORU_DTL_NODE_DOC && node->type <= ORU_DTL_NODE_CONTAINER);
    CHECK(node->op >= ORU_DTL_OP_NOOP && node->op <= ORU_DTL_OP_COLL_ACTION);
    CHECK(node->batch_size >= 0 && node->max_batches >= 0);
    if (const ORUDtlMrInfo *info = node->mr_info) {
        CHECK((info->mr_meta != nullptr) == (info->prop_meta_list != nullptr));
        CHECK((info->act_name != nullptr) == (info->act_in_params != nullptr));
        CHECK(info->act_name == nullptr || node->op == ORU_DTL_OP_ACTION ||
              node->op == ORU_DTL_OP_COLL_ACTION);
    }
    for (ORUDtlNode *child = node->first_child; child != nullptr; child = child->next)
        look_at(child, level + 1);
}

std::string rendered(ORUDtlNode *tree, uint8_t format) {
    return fuzz::printed([&](ORUDoStrbuf *buf) { oru_dtl_tree_to_xml(tree, format, buf); });
}

// What is wrong with a document as a whole is told by an error, and by one of these.
void check_error(ORUDtlNode *tree, ORUDoError *error) {
    CHECK(tree != nullptr || error != nullptr);
    if (error == nullptr)
        return;
    const std::string words = oru_do_error_get_msg(error);
    CHECK(tree == nullptr ? words == "new_dtl_iter: Failed to parse DTL file"
                          : words == "Max Level Exceeded" || words == "Invalid action name");
}

Tree parse(const fuzz::Text &text) {
    ORUDoError *error = nullptr;
    Tree tree(oru_dtl_from_str(text.get(), &error));
    check_error(tree.get(), error);
    oru_do_error_deref(error);
    return tree;
}

// Whatever comes of a document for which memory runs out at some place, it is freed as it is.
void parse_without_memory(const fuzz::Text &text, uint64_t failing_allocation) {
    ORUDoError *error = nullptr;
    poolheap_fail_nth(failing_allocation, 0);
    const Tree tree(oru_dtl_from_str(text.get(), &error));
    poolheap_fail_off();
    oru_do_error_deref(error);
    if (tree && tree->first_child != nullptr)
        rendered(tree.get(), 1);
}

// ---- The walk ----

Nvlist new_params() {
    Nvlist params(oru_do_nvlist_new());
    const std::pair<const char *, FakeValue> values[] = {
        {"n", int64_t{2}},
        {"s", "a b"},
        {"u", UriText{"/chassis;id=1"}},
        {"l", std::vector<UriText>{{"/a"}, {"/b"}}},
        {"z", FakeValue()},
        {"j", "[\"mtu\"]"}};
    for (const auto &[name, value] : values)
        oru_do_nvlist_add(params.get(), name, make_value(value).get());
    return params;
}

void walk(ORUDtlNode *tree, const fuzz::Options &options) {
    fuzz::MadeUp system(options);
    const Nvlist params = new_params();
    ORUDtlCtx *context = oru_dtl_ctx_new(tree, system.data(), system.coll());
    system.context = context;
    int32_t rc = ORU_OK;
    while (rc == ORU_OK) {
        rc = oru_dtl_get_next(system.data(), context, params.get(), options.count());
        CHECK(system.calls < 2 * fuzz::kMostCalls);
        show(context->dtree_node);
        if (options.flag(5))
            oru_do_dtree_remove_children(context->dtree_node);
    }
    oru_dtl_ctx_delete(context);
    CHECK(system.open_cursors() == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    load_model();
    fuzz::Options options{};
    if (size < sizeof options.bytes)
        return 0;
    std::memcpy(options.bytes, data, sizeof options.bytes);
    const std::string document =
        std::string(reinterpret_cast<const char *>(data), size).substr(sizeof options.bytes);
    if (!fuzz::is_harmless(document))
        return 0;
    const fuzz::Text text(document);
    const uint64_t live = poolheap_live_blocks();
    if (const Tree tree = parse(text)) {
        look_at(tree.get(), 0);
        const std::string shown = rendered(tree.get(), 0);
        CHECK(rendered(tree.get(), 1).size() > shown.size());
        CHECK(rendered(parse(text).get(), 0) == shown);
        walk(tree.get(), options);
        parse_without_memory(text, options.failing_allocation());
    }
    CHECK(poolheap_live_blocks() == live);
    return 0;
}
