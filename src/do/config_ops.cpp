#include "do/config_op.h"
#include "do/print.h"
#include "frame/iter.h"
#include "frame/tags.h"

namespace {

using Item = ORUDoConfigOpsItem;
using oru::ConfigOpsEnd;
using oru::Level;
using oru::Ref;

// An item that shares the operation, or null.
Item *make_item(ORUDoConfigOp *op) {
    auto *item = static_cast<Item *>(
        ph_calloc_named(oru::tag_word(oru::Tag::conf_op_item), 1, sizeof(Item)));
    if (item == nullptr) {
        ORU_TRACE(Level::failure, "Failed to allocate config ops item\n");
        return nullptr;
    }
    item->op = oru::ref(op);
    return item;
}

void release_item(Item *item) {
    oru::deref(item->op);
    ph_free_named(item);
}

// The link that leads to the item at `index`, or to none; null for a negative index.
Item **link_at(ORUDoConfigOps &ops, int32_t index) {
    if (index < 0)
        return nullptr;
    Item **link = &ops.first;
    while (*link != nullptr && index-- > 0)
        link = &(*link)->next;
    return link;
}

void unlink(Item **link) {
    Item *item = *link;
    *link = item->next;
    release_item(item);
}

}  // namespace

oru::ConfigOpsEnd::ConfigOpsEnd(ORUDoConfigOps &ops) : link(&ops.first) {
    while (*link != nullptr)
        step();
}

void oru::ConfigOpsEnd::step() {
    link = &(*link)->next;
    ++length;
}

bool oru::ConfigOpsEnd::append(ORUDoConfigOp *op) {
    *link = make_item(op);
    if (*link == nullptr)
        return false;
    step();
    return true;
}

void oru::ObjectType<ORUDoConfigOps>::release_members(ORUDoConfigOps &self) {
    while (self.first != nullptr)
        unlink(&self.first);
}

ORUDoConfigOps *oru_do_config_ops_new() {
    return oru::make<ORUDoConfigOps>();
}

ORUDoConfigOps *oru_do_config_ops_clone(ORUDoConfigOps *ops) {
    ORU_REQUIRE(ops);
    auto clones = oru::make_ref<ORUDoConfigOps>();
    if (!clones)
        return nullptr;
    ConfigOpsEnd end(*clones);
    for (const Item *item = ops->first; item != nullptr; item = item->next) {
        const auto clone = Ref<ORUDoConfigOp>::adopt(oru_do_config_op_clone(item->op));
        if (!clone)
            return nullptr;
        end.append(clone.get());
    }
    return clones.release();
}

ORUDoConfigOps *oru_do_config_ops_reverse_order(ORUDoConfigOps *ops) {
    ORU_REQUIRE(ops);
    auto *reversed = oru::make<ORUDoConfigOps>();
    for (const Item *item = ops->first; reversed != nullptr && item != nullptr; item = item->next) {
        Item *copy = make_item(item->op);
        if (copy == nullptr)
            continue;
        copy->next = reversed->first;
        reversed->first = copy;
    }
    return reversed;
}

// ---- Reading ----

int32_t oru_do_config_ops_get_len(ORUDoConfigOps *config_ops) {
    ORU_REQUIRE(config_ops);
    return ConfigOpsEnd(*config_ops).length;
}

ORUDoConfigOp *oru_do_config_ops_get_op(ORUDoConfigOps *config_ops, int32_t index) {
    ORU_REQUIRE(config_ops);
    Item **link = link_at(*config_ops, index);
    return link != nullptr && *link != nullptr ? (*link)->op : nullptr;
}

ORUDoConfigOp *oru_do_config_ops_get_last_op(ORUDoConfigOps *config_ops) {
    ORU_REQUIRE(config_ops);
    const Item *item = config_ops->first;
    while (item != nullptr && item->next != nullptr)
        item = item->next;
    return item != nullptr ? item->op : nullptr;
}

void oru_do_config_ops_iter(ORUDoConfigOps *config_ops, ORUDoIter *iter) {
    ORU_REQUIRE(config_ops);
    oru::iter_bind(iter, DO_COLL_CONFIG_OPS, config_ops, config_ops->first);
}

int32_t oru_do_config_ops_has_next(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_CONFIG_OPS);
}

ORUDoConfigOp *oru_do_config_ops_get_next(ORUDoIter *iter) {
    const Item *item = oru::iter_advance<Item>(iter);
    return item != nullptr ? item->op : nullptr;
}

// ---- Changing ----

int32_t oru_do_config_ops_add(ORUDoConfigOps *ops, int32_t op_code, ORUDoUri *mr_uri,
                              ORUDoProperties *props, ORUDoName *child_ref_name, ORUDoName *mr_name,
                              ORUDoName *lib_mr_name) {
    ORU_REQUIRE(ops);
    const auto op = Ref<ORUDoConfigOp>::adopt(
        oru_do_config_op_new(op_code, mr_uri, props, child_ref_name, mr_name, lib_mr_name));
    return op ? oru_do_config_ops_add_op(ops, op.get()) : 0;
}

int32_t oru_do_config_ops_add_op(ORUDoConfigOps *ops, ORUDoConfigOp *op) {
    ORU_REQUIRE(ops);
    ORU_REQUIRE(op);
    ConfigOpsEnd end(*ops);
    return end.append(op) ? end.length : 0;
}

// What is appended is not visited, so that a set can be appended to itself.
void oru_do_config_ops_add_ops(ORUDoConfigOps *config_ops, ORUDoConfigOps *new_ops) {
    ORU_REQUIRE(config_ops);
    ORU_REQUIRE(new_ops);
    int32_t left = ConfigOpsEnd(*new_ops).length;
    ConfigOpsEnd end(*config_ops);
    for (const Item *item = new_ops->first; left > 0; item = item->next, --left)
        end.append(item->op);
}

void oru_do_config_ops_remove(ORUDoConfigOps *config_ops, int32_t index) {
    Item **link = config_ops != nullptr ? link_at(*config_ops, index) : nullptr;
    if (link != nullptr && *link != nullptr)
        unlink(link);
}

int32_t oru_do_config_ops_remove_noops(ORUDoConfigOps *config_ops) {
    ORU_REQUIRE(config_ops);
    int32_t removed = 0;
    for (Item **link = &config_ops->first; *link != nullptr;) {
        if ((*link)->op->noop == 0) {
            link = &(*link)->next;
        } else {
            unlink(link);
            ++removed;
        }
    }
    return removed;
}

void oru_do_config_ops_init_pr_ops(ORUDoConfigOps *config_ops) {
    ORU_REQUIRE(config_ops);
    for (const Item *item = config_ops->first; item != nullptr; item = item->next)
        oru_do_config_op_init_pr_ops(item->op);
}

// ---- Printing ----

int32_t oru_do_config_ops_to_strbuf(ORUDoConfigOps *config_ops, int32_t, ORUDoStrbuf *strbuf) {
    if (config_ops == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_char(strbuf, '[');
    oru::print_separated(config_ops->first, ", ", strbuf, [strbuf](const Item &item) {
        oru_do_config_op_to_strbuf(item.op, 0, strbuf);
    });
    oru_do_strbuf_add_char(strbuf, ']');
    return ORU_OK;
}

void oru_do_config_ops_trace(ORUDoConfigOps *config_ops, uint32_t level) {
    oru::trace_text<oru_do_config_ops_to_strbuf>(config_ops, level);
}

ORU_OBJECT_API(ORUDoConfigOps, oru_do_config_ops)
