// What tells of changes: operations and events.
#include "do/config_op.h"
#include "do/event.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/uri.h"
#include "json/read.h"

namespace oru::json {
namespace {

Ref<ORUDoName> name_of(const Item &item) {
    return Ref<ORUDoName>::adopt(oru_do_name_new_l(item.scalar.text, item.scalar_len));
}

Ref<ORUDoUri> uri_of(const Item &item) {
    return Ref<ORUDoUri>::adopt(oru_do_uri_new_l(item.scalar.text, item.scalar_len));
}

// The set of the element that holds the operations, made for the first of them.
ORUDoConfigOps *set_of(ORUDoJsonCtxData *ctx, Element &holder) {
    if (holder.obj == nullptr)
        holder.obj = oru_do_config_ops_new();
    if (holder.obj == nullptr)
        fail_memory(ctx);
    return static_cast<ORUDoConfigOps *>(holder.obj);
}

// An operation as its members come in. It is added as soon as it has a code, a URI and properties;
// what comes behind these is for the next one that is added, which takes another URI.
struct Operation {
    ORUDoJsonCtxData *ctx;
    ConfigOpsEnd end;
    int32_t op_code = -1;
    Ref<ORUDoUri> mr_uri{};
    Ref<ORUDoProperties> props{};
    Ref<ORUDoName> child_ref_name{};
    Ref<ORUDoName> mr_name{};
    Ref<ORUDoName> lib_mr_name{};

    template <class Object>
    void take(Ref<Object> &member, Ref<Object> object) {
        member = std::move(object);
        if (!member)
            fail_memory(ctx);
    }

    void take(const Item &item) {
        if (item.type == kInteger && has_key(item, "op_code")) {
            op_code = static_cast<int32_t>(item.scalar.integer);
        } else if (item.type == kTypeProperties && has_key(item, "props")) {
            props = Ref<ORUDoProperties>::share(static_cast<ORUDoProperties *>(item.obj));
        } else if (item.type == kText) {
            take_text(item);
        }
    }

    // A key may be the beginning of several; the first of them is meant.
    void take_text(const Item &item) {
        if (has_key(item, "mr_uri"))
            take(mr_uri, uri_of(item));
        else if (has_key(item, "child_ref_name"))
            take(child_ref_name, name_of(item));
        else if (has_key(item, "mr_name"))
            take(mr_name, name_of(item));
        else if (has_key(item, "lib_mr_name"))
            take(lib_mr_name, name_of(item));
    }

    void add_if_whole() {
        if (op_code == 0 || !mr_uri || !props)
            return;
        const auto op = Ref<ORUDoConfigOp>::adopt(
            oru_do_config_op_new(op_code, mr_uri.get(), props.get(), child_ref_name.get(),
                                 mr_name.get(), lib_mr_name.get()));
        if (!op || !end.append(op.get()))
            fail_memory(ctx);
        mr_uri = {};
        child_ref_name = {};
        mr_name = {};
        lib_mr_name = {};
    }
};

void read_operation(ORUDoJsonCtxData *ctx, const Element &element, Element &holder) {
    ORUDoConfigOps *ops = set_of(ctx, holder);
    if (ops == nullptr)
        return;
    if (holder.ops_end == nullptr)
        holder.ops_end = ConfigOpsEnd(*ops).link;
    Operation operation{ctx, ConfigOpsEnd(holder.ops_end)};
    for (const Item *item = element.items; item != nullptr; item = item->next) {
        operation.take(*item);
        operation.add_if_whole();
    }
    holder.ops_end = operation.end.link;
}

bool holds_operations(const Element *element) {
    return element != nullptr && element->type_info != nullptr &&
           element->type_info->type_code == kTypeConfigOps;
}

}  // namespace

// An element without a tag within the set is an operation, which is filed in the set.
void *config_ops_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (element->tag == nullptr && holds_operations(element->parent)) {
        read_operation(ctx, *element, *element->parent);
        return nullptr;
    }
    return oru_do_config_ops_ref(set_of(ctx, *element));
}

void *event_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeEvent))
        return nullptr;
    const Item *name_item = find_item(*element, "name", kText);
    const Item *uri_item = find_item(*element, "mr_uri", kText);
    const Item *info = find_item(*element, "info", kTypeProperties);
    if (name_item == nullptr || uri_item == nullptr || info == nullptr)
        return nullptr;
    const Item *time = find_item(*element, "time", kInteger);
    const Item *severity = find_item(*element, "sev", kInteger);
    const auto name = name_of(*name_item);
    const auto uri = uri_of(*uri_item);
    auto event = Ref<ORUDoEvent>();
    if (name && uri) {
        event = Ref<ORUDoEvent>::adopt(oru_do_event_new(
            name.get(), uri.get(), time != nullptr ? time->scalar.integer : 0,
            severity != nullptr ? static_cast<int32_t>(severity->scalar.integer) : 0,
            static_cast<ORUDoProperties *>(info->obj)));
    }
    return finished(ctx, std::move(event));
}

}  // namespace oru::json
