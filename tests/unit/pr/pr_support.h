// A handler with an error holder that keeps what it is told, and the objects that requests are made
// of.
#ifndef ORU_TESTS_UNIT_PR_SUPPORT_H
#define ORU_TESTS_UNIT_PR_SUPPORT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "oru/error.h"
#include "oru/nlist.h"
#include "oru/pr_ctx.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/vtable.h"
#include "tests/support/owned.h"

namespace oru::test {

using Error = std::unique_ptr<ORUDoError, Deref<oru_do_error_deref>>;
using Nlist = std::unique_ptr<ORUDoNlist, Deref<oru_do_nlist_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Deref<oru_do_properties_deref>>;
using Vtable = std::unique_ptr<ORUDoVtable, Deref<oru_do_vtable_deref>>;

// The holder writes down its calls.
struct Holder {
    ORUErrorIfc table{};
    std::vector<std::string> calls;
    ORUDoError *error = nullptr;

    Holder() {
        table.get_error = [](ORUErrorIfc *ifc) {
            of(ifc).calls.emplace_back("get");
            return of(ifc).error;
        };
        table.set_error = [](ORUErrorIfc *ifc, int32_t code, const char *text) {
            of(ifc).calls.push_back("set " + std::to_string(code) + " " + text);
        };
        table.set_do_error = [](ORUErrorIfc *ifc, ORUDoError *given) {
            of(ifc).calls.emplace_back("set_do");
            of(ifc).error = given;
        };
        table.add_warning = [](ORUErrorIfc *ifc, int32_t code, const char *text) {
            of(ifc).calls.push_back("warn " + std::to_string(code) + " " + text);
        };
        table.reset_errors = [](ORUErrorIfc *ifc) { of(ifc).calls.emplace_back("reset"); };
    }
    static Holder &of(ORUErrorIfc *ifc) { return *reinterpret_cast<Holder *>(ifc); }
};

inline void read_nothing() {}

// Reads the attributes "mtu" and "speed".
class Request : public testing::Test {
  public:
    Request() {
        oru_pr_crudx_handler_add_prop_cb(crudx, "mtu", read_nothing, nullptr);
        oru_pr_crudx_handler_add_prop_cb(crudx, "speed", read_nothing, nullptr);
    }
    ~Request() override {
        reset();
        oru_pr_crudx_handler_delete(crudx);
    }
    void reset() { oru_pr_ctx_delete(std::exchange(ctx, nullptr), std::exchange(inst, nullptr)); }

    int32_t get_next(ORUDoNvlist *where_list = nullptr) {
        reset();
        return oru_pr_ctx_new_get_next(crudx, uri.get(), nlist.get(), where_list, order.get(), 7,
                                       table.get(), walk.get(), &ctx, &inst);
    }
    // A context of that code, with the arguments below.
    void make(int32_t code) {
        reset();
        ASSERT_EQ(make_code(code), ORU_OK);
        ASSERT_NE(ctx, nullptr);
        ASSERT_NE(inst, nullptr);
    }

    int32_t make_code(int32_t code) {
        const int32_t mode = code >= 7 && code <= 9 ? 1 : 0;
        switch (code) {
            case 1:
                return oru_pr_ctx_new_get_oper_prop_values(crudx, uri.get(), nlist.get(),
                                                           vlist.get(), &ctx, &inst);
            case 2:
                return oru_pr_ctx_new_get_cfg_prop_values(crudx, uri.get(), nlist.get(),
                                                          vlist.get(), &ctx, &inst);
            case 3:
                return get_next();
            case 4:
            case 7:
                return oru_pr_ctx_new_create_resource(crudx, &data, uri.get(), ref_name.get(),
                                                      type_name.get(), props.get(), mode, &ctx,
                                                      &inst);
            case 5:
            case 8:
                return oru_pr_ctx_new_set_properties(crudx, &data, uri.get(), props.get(), mode,
                                                     &ctx, &inst);
            case 6:
            case 9:
                return oru_pr_ctx_new_delete_resource(crudx, &data, uri.get(), mode, &ctx, &inst);
            default:
                return oru_pr_ctx_new_invoke_action(crudx, uri.get(), type_name.get(), props.get(),
                                                    out_props.get(), &ctx, &inst);
        }
    }

    Holder holder;
    ORUPrCrudxHandler *crudx = oru_pr_crudx_handler_new(&holder);
    ORUDataIfc data{};
    Uri uri{oru_do_uri_new("/a;k=1")};
    Nlist nlist{oru_do_nlist_new()};
    Nlist order{oru_do_nlist_new()};
    Vlist vlist{oru_do_vlist_new()};
    Vlist walk{oru_do_vlist_new()};
    Vtable table{oru_do_vtable_new()};
    Name ref_name{oru_do_name_new("ports")};
    Name type_name{oru_do_name_new("Port")};
    Properties props{oru_do_properties_new()};
    Properties out_props{oru_do_properties_new()};
    ORUPrCtx *ctx = nullptr;
    ORUPrInstanceCtx *inst = nullptr;
};

// A where clause of int values.
inline Nvlist where_of(const std::vector<std::pair<std::string, int32_t>> &items) {
    Nvlist where(oru_do_nvlist_new());
    for (const auto &[name, n] : items)
        oru_do_nvlist_add_int(where.get(), name.c_str(), n);
    return where;
}

inline Nlist names_of(const std::vector<const char *> &names) {
    Nlist list(oru_do_nlist_new());
    for (const char *name : names)
        oru_do_nlist_add_string(list.get(), name);
    return list;
}

inline std::vector<std::string> names_in(ORUDoNlist *list) {
    std::vector<std::string> names;
    for (int32_t i = 0; i < oru_do_nlist_get_len(list); ++i)
        names.emplace_back(oru_do_name_get_strname(oru_do_nlist_get_name(list, i)));
    return names;
}

inline std::vector<std::string> names_in(ORUDoNvlist *list) {
    std::vector<std::string> names;
    for (int32_t i = 0; i < oru_do_nvlist_get_len(list); ++i)
        names.emplace_back(oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(list, i)));
    return names;
}

// The values as texts, "null" for those of that type.
inline std::vector<std::string> values_in(ORUDoVlist *list) {
    std::vector<std::string> texts;
    for (int32_t i = 0; i < oru_do_vlist_get_len(list); ++i) {
        ORUDoValue *value = oru_do_vlist_get_value(list, i);
        const Strbuf text(oru_do_strbuf_new());
        oru_do_strbuf_add_value(text.get(), value);
        texts.emplace_back(oru_do_value_is_null(value) != 0 ? "null"
                                                            : oru_do_strbuf_to_string(text.get()));
    }
    return texts;
}

}  // namespace oru::test

#endif
