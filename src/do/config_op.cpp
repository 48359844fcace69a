#include "do/config_op.h"

#include "do/error.h"
#include "do/name.h"
#include "do/print.h"
#include "do/properties.h"
#include "do/uri.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"

namespace {

// Copies a member that may be missing; false when the copy could not be had.
template <class Object, class Copy>
bool copy_member(Object *&to, Object *from, Copy &&copy) {
    to = from != nullptr ? copy(from) : nullptr;
    return from == nullptr || to != nullptr;
}

ORUDoName *copy_name(ORUDoName *name) {
    return oru_do_name_new(oru_do_name_get_strname(name));
}

ORUDoUri *copy_uri(ORUDoUri *uri) {
    return oru_do_uri_new(oru_do_uri_get_uri_str(uri));
}

// All members but the error, which stays with the source.
bool copy_members(ORUDoConfigOp &to, const ORUDoConfigOp &from) {
    return copy_member(to.mr_uri, from.mr_uri, copy_uri) &&
           copy_member(to.props, from.props, oru_do_properties_clone) &&
           copy_member(to.pr_props, from.pr_props, oru_do_properties_clone) &&
           copy_member(to.child_ref_name, from.child_ref_name, copy_name) &&
           copy_member(to.mr_name, from.mr_name, copy_name) &&
           copy_member(to.lib_mr_name, from.lib_mr_name, copy_name);
}

}  // namespace

void oru::ObjectType<ORUDoConfigOp>::release_members(ORUDoConfigOp &self) {
    deref(self.mr_uri);
    deref(self.props);
    deref(self.pr_props);
    deref(self.child_ref_name);
    deref(self.mr_name);
    deref(self.lib_mr_name);
    deref(self.err);
}

ORUDoConfigOp *oru_do_config_op_new(int32_t op_code, ORUDoUri *mr_uri, ORUDoProperties *props,
                                    ORUDoName *child_ref_name, ORUDoName *mr_name,
                                    ORUDoName *lib_mr_name) {
    auto *op = oru::make<ORUDoConfigOp>();
    if (op == nullptr)
        return nullptr;
    op->op_code = op_code;
    op->mr_uri = oru::ref(mr_uri);
    op->props = oru::ref(props);
    op->child_ref_name = oru::ref(child_ref_name);
    op->mr_name = oru::ref(mr_name);
    op->lib_mr_name = oru::ref(lib_mr_name);
    return op;
}

ORUDoConfigOp *oru_do_config_op_clone(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    auto clone = oru::make_ref<ORUDoConfigOp>();
    if (!clone)
        return nullptr;
    clone->op_code = op->op_code;
    clone->noop = op->noop;
    return copy_members(*clone, *op) ? clone.release() : nullptr;
}

// ---- Reading ----

int32_t oru_do_config_op_get_op_code(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->op_code;
}

int32_t oru_do_config_op_is_noop(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->noop;
}

ORUDoUri *oru_do_config_op_get_mr_uri(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->mr_uri;
}

ORUDoProperties *oru_do_config_op_get_props(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->props;
}

ORUDoProperties *oru_do_config_op_get_pr_props(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->pr_props;
}

ORUDoName *oru_do_config_op_get_child_ref_name(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->child_ref_name;
}

ORUDoName *oru_do_config_op_get_mr_name(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->mr_name;
}

ORUDoName *oru_do_config_op_get_new_mr_name(ORUDoConfigOp *op) {
    return oru_do_config_op_get_mr_name(op);
}

ORUDoName *oru_do_config_op_get_lib_mr_name(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->lib_mr_name;
}

ORUDoError *oru_do_config_op_get_err(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    return op->err;
}

// ---- Changing ----

void oru_do_config_op_set_op_code(ORUDoConfigOp *op, int32_t op_code) {
    ORU_REQUIRE(op);
    op->op_code = op_code;
}

void oru_do_config_op_set_noop(ORUDoConfigOp *op, int32_t noop) {
    ORU_REQUIRE(op);
    op->noop = noop;
}

void oru_do_config_op_set_mr_uri(ORUDoConfigOp *op, ORUDoUri *mr_uri) {
    ORU_REQUIRE(op);
    oru::replace(op->mr_uri, mr_uri);
}

void oru_do_config_op_set_props(ORUDoConfigOp *op, ORUDoProperties *props) {
    ORU_REQUIRE(op);
    ORU_REQUIRE(props);
    oru::replace(op->props, props);
}

void oru_do_config_op_set_child_ref_name(ORUDoConfigOp *op, ORUDoName *child_ref_name) {
    ORU_REQUIRE(op);
    oru::replace(op->child_ref_name, child_ref_name);
}

void oru_do_config_op_set_mr_name(ORUDoConfigOp *op, ORUDoName *mr_name) {
    ORU_REQUIRE(op);
    oru::replace(op->mr_name, mr_name);
}

void oru_do_config_op_set_lib_mr_name(ORUDoConfigOp *op, ORUDoName *lib_mr_name) {
    ORU_REQUIRE(op);
    oru::replace(op->lib_mr_name, lib_mr_name);
}

// The caller's reference becomes the operation's.
void oru_do_config_op_set_err(ORUDoConfigOp *op, ORUDoError *err) {
    ORU_REQUIRE(op);
    oru::deref(std::exchange(op->err, err));
}

// An earlier table of the provider is not released: an operation gets one once.
void oru_do_config_op_init_pr_ops(ORUDoConfigOp *op) {
    ORU_REQUIRE(op);
    if (op->props != nullptr)
        op->pr_props = oru_do_properties_new_init(op->props);
}

// ---- Printing ----

int32_t oru_do_config_op_to_strbuf(ORUDoConfigOp *op, int32_t, ORUDoStrbuf *strbuf) {
    if (op == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_char(strbuf, '(');
    oru_do_uri_to_strbuf(op->mr_uri, 0, strbuf);
    oru_do_strbuf_add_char(strbuf, ':');
    oru_do_strbuf_add_long(strbuf, op->op_code);
    oru_do_strbuf_add_char(strbuf, ':');
    oru_do_strbuf_add_string(strbuf, op->child_ref_name != nullptr ? op->child_ref_name->str : "-");
    if (op->mr_name != nullptr) {
        oru_do_strbuf_add_char(strbuf, ':');
        oru_do_strbuf_add_string(strbuf, op->mr_name->str);
    }
    if (op->err != nullptr) {
        oru_do_strbuf_add_char(strbuf, ':');
        oru_do_error_to_strbuf(op->err, 0, strbuf);
    }
    oru_do_strbuf_add_string(strbuf, ") ");
    oru_do_properties_to_strbuf(op->props, 0, strbuf);
    return ORU_OK;
}

void oru_do_config_op_trace(ORUDoConfigOp *op, uint32_t level) {
    oru::trace_text<oru_do_config_op_to_strbuf>(op, level);
}

ORU_OBJECT_API(ORUDoConfigOp, oru_do_config_op)
