#include "tests/support/fake_ifc.h"

#include <utility>

#include "oru/dtree.h"
#include "oru/iter.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"

namespace oru::test {
namespace {

Value value_of(std::monostate) {
    return Value(oru_do_value_new_null());
}

Value value_of(int64_t number) {
    return Value(oru_do_value_new_long(number));
}

Value value_of(const std::string &text) {
    return Value(oru_do_value_new_string(text.c_str()));
}

Value value_of(const UriText &uri) {
    const Uri object(oru_do_uri_new(uri.text.c_str()));
    return Value(object ? oru_do_value_new_mr_uri(object.get()) : nullptr);
}

Value value_of(const std::vector<UriText> &uris) {
    const Vlist list(oru_do_vlist_new());
    if (!list)
        return nullptr;
    for (const UriText &uri : uris) {
        const Value value = value_of(uri);
        oru_do_vlist_add(list.get(), value.get());
    }
    return Value(oru_do_value_new_array(list.get()));
}

std::string text_of(ORUDoValue *value) {
    if (value == nullptr)
        return "(none)";
    if (oru_do_value_is_null(value) != 0)
        return "null";
    const Strbuf text(oru_do_strbuf_new());
    if (!text)
        return "";
    oru_do_value_to_strbuf(value, 0, text.get());
    return oru_do_strbuf_get_err(text.get()) == 0 ? oru_do_strbuf_to_string(text.get()) : "";
}

std::string text_of(ORUDoUri *uri) {
    return oru_do_uri_get_uri_str(uri);
}

std::string text_of(ORUDoNlist *names) {
    std::string text = "[";
    for (int32_t i = 0; i < oru_do_nlist_get_len(names); ++i)
        text += (i == 0 ? "" : ",") +
                std::string(oru_do_name_get_strname(oru_do_nlist_get_name(names, i)));
    return text + "]";
}

std::string text_of(ORUDoNvlist *list) {
    std::string text = "{";
    for (int32_t i = 0; i < oru_do_nvlist_get_len(list); ++i) {
        ORUDoNvlistItem *item = oru_do_nvlist_get_item(list, i);
        ORUDoValue *value = oru_do_nvlist_item_get_value(item);
        int32_t rc = 0;
        text += i == 0 ? "" : ",";
        text += oru_do_nvlist_item_get_name(item);
        text += ":";
        if (oru_do_value_get_type(value) == ORU_DO_TYPE_SEQUENCE) {
            text += text_of(oru_do_value_get_sequence(value, &rc));
        } else {
            text += text_of(value);
        }
    }
    return text + "}";
}

std::string text_of(ORUDoProperties *props, bool with_ids) {
    std::string text;
    for (int32_t i = 0; i < oru_do_properties_get_len(props); ++i) {
        ORUDoProperty *prop = oru_do_properties_get_prop_at_index(props, i);
        const std::string name = oru_do_property_get_name_string(prop);
        if (!with_ids && (name == "_uri" || name == "_mr"))
            continue;
        text += (text.empty() ? "" : ",") + name + "=" + text_of(oru_do_property_get_value(prop));
    }
    return text;
}

FakeValue value_in(const Attributes &attributes, const std::string &name) {
    const auto found = attributes.find(name);
    return found != attributes.end() ? found->second : FakeValue();
}

}  // namespace

struct FakeSystem::Cursor {
    ORUDtlCursor table{};
    FakeSystem *system;
    std::vector<std::string> names;
    std::vector<FakeRow> rows;
    size_t at = 0;
};

Value make_value(const FakeValue &value) {
    return std::visit([](const auto &alternative) { return value_of(alternative); }, value);
}

std::string show(const FakeValue &value) {
    const Value object = make_value(value);
    return text_of(object.get());
}

FakeSystem &FakeSystem::of(ORUDataIfc *ifc) {
    return *reinterpret_cast<Data *>(ifc)->system;
}

FakeSystem &FakeSystem::of(ORUCollIfc *ifc) {
    return *reinterpret_cast<Coll *>(ifc)->system;
}

void FakeSystem::note(const std::string &call) {
    calls_.push_back(call);
    if (before_call != nullptr)
        before_call(*this);
}

std::vector<std::string> FakeSystem::take_calls() {
    return std::exchange(calls_, {});
}

int32_t FakeSystem::outcome(const std::string &call) {
    error_.reset();
    if (const size_t blank = call.find(' '); provide && blank != std::string::npos)
        provide(call.substr(blank + 1));
    const auto failure = failures.find(call);
    if (failure == failures.end())
        return ORU_OK;
    if (!silent)
        error_.reset(oru_do_error_new(failure->second, "failed"));
    return failure->second;
}

ORUErrorIfc *FakeSystem::holder() {
    return &holder_.table;
}

int32_t FakeSystem::fill(const std::map<std::string, Attributes> &from, ORUDoUri *uri,
                         ORUDoNlist *names, ORUDoVlist *values) {
    const auto found = from.find(text_of(uri));
    if (found == from.end())
        return ORU_RC_NO_SUCH_RESOURCE;
    for (int32_t i = 0; i < oru_do_nlist_get_len(names); ++i) {
        if (static_cast<size_t>(i) >= most_values)
            break;
        const char *name = oru_do_name_get_strname(oru_do_nlist_get_name(names, i));
        const Value value = make_value(value_in(found->second, name));
        oru_do_vlist_add(values, value.get());
    }
    return ORU_OK;
}

int32_t FakeSystem::open(const std::string &kind, ORUDoUri *uri, ORUDoNlist *names,
                         ORUDoNvlist *where, ORUDoNlist *order, ORUDtlCursor **out_cursor) {
    note(kind + " " + text_of(uri) + " " + text_of(names) +
         (where != nullptr ? " where=" + text_of(where) : "") +
         (order != nullptr ? " order=" + text_of(order) : ""));
    if (const int32_t rc = outcome("open " + text_of(uri)); rc != ORU_OK)
        return rc;
    auto *cursor = new Cursor;
    cursor->system = this;
    for (int32_t i = 0; i < oru_do_nlist_get_len(names); ++i)
        cursor->names.emplace_back(oru_do_name_get_strname(oru_do_nlist_get_name(names, i)));
    cursor->rows = rows[text_of(uri)];
    cursor->table.cursor_close = [](ORUDtlCursor *closed) {
        auto *self = reinterpret_cast<Cursor *>(closed);
        self->system->note("close");
        --self->system->open_cursors_;
        delete self;
        return int32_t{7};  // not looked at
    };
    cursor->table.cursor_get_next = [](ORUDtlCursor *asked, uint32_t count, ORUDoVtable *table) {
        auto *self = reinterpret_cast<Cursor *>(asked);
        return self->system->next(*self, count, table);
    };
    cursor->table.cursor_get_error_ifc = [](ORUDtlCursor *asked) {
        return reinterpret_cast<Cursor *>(asked)->system->holder();
    };
    ++open_cursors_;
    *out_cursor = &cursor->table;
    return ORU_OK;
}

int32_t FakeSystem::next(Cursor &cursor, uint32_t count, ORUDoVtable *table) {
    note("next " + std::to_string(count));
    if (const int32_t rc = outcome("next"); rc != ORU_OK)
        return rc;
    const size_t left = cursor.rows.size() - cursor.at;
    size_t most = count != 0 ? count : batch;
    if (most == 0 || most > left)
        most = left;
    for (size_t i = 0; i < most; ++i) {
        const FakeRow &row = cursor.rows[cursor.at++];
        const Vlist values(oru_do_vlist_new());
        if (!values)
            return ORU_RC_MALLOC;
        for (const std::string &name : cursor.names) {
            const bool is_address = name == "_uri" && !without_uri;
            const Value value = is_address ? make_value(UriText{row.uri})
                                           : make_value(value_in(row.attributes, name));
            oru_do_vlist_add(values.get(), value.get());
        }
        oru_do_vtable_add(table, values.get());
    }
    const bool ended = cursor.at == cursor.rows.size() && (!late_end || most == 0);
    return ended ? ORU_RC_NO_MORE_VALUE : ORU_OK;
}

FakeSystem::FakeSystem() {
    data_.system = coll_.system = holder_.system = this;
    holder_.table.get_error = [](ORUErrorIfc *ifc) {
        return reinterpret_cast<Holder *>(ifc)->system->error_.get();
    };
    ORUDataIfc &data = data_.table;
    data.get_error_ifc = [](ORUDataIfc *ifc) { return of(ifc).holder(); };
    data.get_context_uri = [](ORUDataIfc *ifc) -> ORUDoUri * {
        FakeSystem &self = of(ifc);
        self.note("context");
        self.context_.reset(self.context_uri.empty() ? nullptr
                                                     : oru_do_uri_new(self.context_uri.c_str()));
        return self.context_.get();
    };
    data.get_cfg_prop_values = [](ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                  uint8_t return_default, ORUDoVlist *values) {
        FakeSystem &self = of(ifc);
        self.note("cfg " + text_of(uri) + " " + text_of(names) +
                  (return_default != 0 ? "" : " no defaults"));
        const int32_t rc = self.outcome("cfg " + text_of(uri));
        return rc != ORU_OK ? rc : self.fill(self.config, uri, names, values);
    };
    data.get_oper_prop_values = [](ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                   ORUDoVlist *values) {
        FakeSystem &self = of(ifc);
        self.note("oper " + text_of(uri) + " " + text_of(names));
        const int32_t rc = self.outcome("oper " + text_of(uri));
        return rc != ORU_OK ? rc : self.fill(self.oper, uri, names, values);
    };
    const auto fill_props = [](const std::map<std::string, Attributes> &from, ORUDoUri *uri,
                               ORUDoProperties *props) {
        const auto found = from.find(text_of(uri));
        if (found == from.end())
            return int32_t{ORU_RC_NO_SUCH_RESOURCE};
        for (const auto &[name, value] : found->second) {
            const Value object = make_value(value);
            if (object)
                oru_do_properties_set_value(props, name.c_str(), object.get());
        }
        return int32_t{ORU_OK};
    };
    static const auto kFillProps = fill_props;
    data.get_cfg_props = [](ORUDataIfc *ifc, ORUDoUri *uri, void *filter, ORUDoProperties *props) {
        FakeSystem &self = of(ifc);
        self.note("cfg_props " + text_of(uri) + (filter != nullptr ? " filtered" : ""));
        const int32_t rc = self.outcome("cfg_props " + text_of(uri));
        return rc != ORU_OK ? rc : kFillProps(self.config, uri, props);
    };
    data.get_oper_props = [](ORUDataIfc *ifc, ORUDoUri *uri, void *filter, ORUDoProperties *props) {
        FakeSystem &self = of(ifc);
        self.note("oper_props " + text_of(uri) + (filter != nullptr ? " filtered" : ""));
        const int32_t rc = self.outcome("oper_props " + text_of(uri));
        return rc != ORU_OK ? rc : kFillProps(self.oper, uri, props);
    };
    data.invoke_action = [](ORUDataIfc *ifc, ORUDoUri *uri, ORUDoName *action, ORUDoProperties *in,
                            ORUDoProperties *out) {
        FakeSystem &self = of(ifc);
        self.note("action " + text_of(uri) + " " + oru_do_name_get_strname(action) + " (" +
                  text_of(in, true) + ")");
        if (const int32_t rc = self.outcome("action " + text_of(uri)); rc != ORU_OK)
            return rc;
        for (const auto &[name, value] : self.answer) {
            const Value object = make_value(value);
            if (object)
                oru_do_properties_set_value(out, name.c_str(), object.get());
        }
        return int32_t{ORU_OK};
    };
    ORUCollIfc &coll = coll_.table;
    coll.new_config_cursor = [](ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *names,
                                ORUDoNvlist *where, ORUDoNlist *order, uint8_t return_default,
                                ORUDtlCursor **out) {
        return of(ifc).open(return_default != 0 ? "open_cfg" : "open_cfg_no_defaults", uri, names,
                            where, order, out);
    };
    coll.new_oper_cursor = [](ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *names, ORUDoNvlist *where,
                              ORUDoNlist *order, ORUDtlCursor **out) {
        return of(ifc).open("open_oper", uri, names, where, order, out);
    };
}

std::string show_children(ORUDoDtree *node) {
    std::string text;
    for (int32_t i = 0; i < oru_do_dtree_get_child_count(node); ++i)
        text += (i == 0 ? "" : " ") + show(oru_do_dtree_get_child(node, i));
    return text;
}

std::string show(ORUDoDtree *node) {
    std::string text = oru_do_dtree_is_hidden(node) != 0 ? "~" : "";
    text += oru_do_name_get_strname(oru_do_dtree_get_name(node));
    if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(node))
        text += "(" + text_of(uri) + ")";
    if (ORUDoProperties *props = oru_do_dtree_get_properties(node)) {
        const std::string shown = text_of(props, false);
        if (!shown.empty())
            text += "[" + shown + "]";
    }
    if (ORUDoError *error = oru_do_dtree_get_error(node)) {
        const char *words = oru_do_error_get_msg(error);
        text += "!" + std::to_string(oru_do_error_get_code(error)) + " " +
                (words != nullptr ? words : "");
    }
    const std::string children = show_children(node);
    return children.empty() ? text : text + "{" + children + "}";
}

}  // namespace oru::test
