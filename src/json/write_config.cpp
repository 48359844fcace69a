// What tells of changes: operations and events.
#include "do/config_op.h"
#include "do/event.h"
#include "json/write.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"

namespace {

using oru::json::Members;
using oru::json::put;
using oru::json::put_raw;

void put_name(Members &members, const char *key, ORUDoName *name, ORUDoStrbuf *buf) {
    if (name == nullptr)
        return;
    members.next(key);
    put_raw(buf, oru_do_name_get_strname(name));
}

void put_uri(Members &members, ORUDoUri *uri, ORUDoStrbuf *buf) {
    if (uri == nullptr)
        return;
    members.next("mr_uri");
    put_raw(buf, oru_do_uri_get_uri_str(uri));
}

void put_number(Members &members, const char *key, int64_t number, ORUDoStrbuf *buf) {
    members.next(key);
    oru_do_strbuf_add_long(buf, number);
}

void put_properties(Members &members, const char *key, ORUDoProperties *props, ORUDoStrbuf *buf,
                    uint32_t options) {
    if (props == nullptr)
        return;
    members.next(key);
    oru_do_properties_to_json_opt(props, buf, options);
}

void put_op(const ORUDoConfigOp &op, ORUDoStrbuf *buf, uint32_t options) {
    put(buf, "{");
    Members members(buf);
    put_uri(members, op.mr_uri, buf);
    put_number(members, "op_code", op.op_code, buf);
    put_properties(members, "props", op.props, buf, options);
    put_name(members, "child_ref_name", op.child_ref_name, buf);
    put_name(members, "mr_name", op.mr_name, buf);
    put_name(members, "lib_mr_name", op.lib_mr_name, buf);
    if (op.err != nullptr) {
        members.next("err");
        oru_do_error_to_json(op.err, buf);
    }
    put(buf, "}");
}

}  // namespace

int32_t oru_do_config_ops_to_json(ORUDoConfigOps *config_ops, ORUDoStrbuf *buf) {
    return oru_do_config_ops_to_json_opt(config_ops, buf, 0);
}

int32_t oru_do_config_ops_to_json_opt(ORUDoConfigOps *config_ops, ORUDoStrbuf *buf,
                                      uint32_t options) {
    ORU_REQUIRE(config_ops);
    put(buf, "{\"%config_ops\":[");
    Members members(buf);
    for (const ORUDoConfigOpsItem *item = config_ops->first; item != nullptr; item = item->next) {
        members.next();
        put_op(*item->op, buf, options);
    }
    put(buf, "]}");
    return 0;
}

int32_t oru_do_event_to_json(ORUDoEvent *event, ORUDoStrbuf *buf) {
    return oru_do_event_to_json_opt(event, buf, 0);
}

int32_t oru_do_event_to_json_opt(ORUDoEvent *event, ORUDoStrbuf *buf, uint32_t options) {
    ORU_REQUIRE(event);
    put(buf, "{\"%event\":{");
    Members members(buf);
    put_name(members, "name", event->name, buf);
    put_uri(members, event->uri, buf);
    put_number(members, "time", event->event_time, buf);
    put_number(members, "sev", event->severity, buf);
    put_properties(members, "info", event->info, buf, options);
    put(buf, "}}");
    return 0;
}
