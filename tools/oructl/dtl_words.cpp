#include "dtl_words.h"

#include "handles.h"
#include "model_words.h"
#include "object_text.h"
#include "value_text.h"

namespace oructl {
namespace {

std::string conditions_words(ORUDoNvlist *list, const std::string &between);

// A group is a sequence under the word that joins its members.
std::string condition_words(ORUDoNvlistItem *item) {
    const std::string name = oru_do_nvlist_item_get_name(item);
    ORUDoValue *value = oru_do_nvlist_item_get_value(item);
    int32_t code = 0;
    if (name == " AND " || name == " OR ") {
        ORUDoNvlist *members = oru_do_value_get_sequence(value, &code);
        return "(" + (members != nullptr ? conditions_words(members, name) : "") + ")";
    }
    return name + (name.find(' ') == std::string::npos ? " = " : " ") + value_words(value);
}

std::string conditions_words(ORUDoNvlist *list, const std::string &between) {
    std::string words;
    for (EachItem each(list); ORUDoNvlistItem *item = each();)
        words += (words.empty() ? "" : between) + condition_words(item);
    return words;
}

std::string parameters_words(ORUDoProperties *params) {
    std::vector<std::string> words;
    for (EachProperty each(params); ORUDoProperty *param = each();)
        words.push_back(text_of(oru_do_property_get_name(param)) + " = " +
                        value_words(oru_do_property_get_value(param)));
    return joined(words);
}

class Details {
  public:
    void add(const char *label, const std::string &words) {
        if (!words.empty())
            lines_.push_back(std::string(label) + " " + words);
    }
    void add_flag(bool set, const char *words) {
        if (set)
            lines_.emplace_back(words);
    }
    void add_number(const char *label, int32_t number, const char *param) {
        if (param != nullptr)
            add(label, param);
        else if (number > 0)
            add(label, std::to_string(number));
    }
    std::vector<std::string> take() { return std::move(lines_); }

  private:
    std::vector<std::string> lines_;
};

void add_reading(Details &details, const ORUDtlMrInfo &info) {
    details.add("reads", joined(names_of(info.cfg_attr_nlist)));
    details.add("reads operational", joined(names_of(info.oper_attr_nlist)));
    details.add("group", joined(names_of(info.cfg_data_nlist)));
    details.add("operational group", joined(names_of(info.oper_data_nlist)));
    details.add("select", text_of(info.attr_select));
    if (info.where_clause != nullptr) {
        const std::string words = conditions_words(info.where_clause, ", ");
        details.add(info.use_where_clause_once != 0 ? "where, once:" : "where",
                    words.empty() ? "nothing" : words);
    }
    details.add("order", joined(names_of(info.order_by)));
}

}  // namespace

std::string title_of(const ORUDtlNode &node) {
    std::string title = text_of(node.name) + "  " + oru_dtl_tree_get_node_type_str(node.type);
    if (node.op != ORU_DTL_OP_NOOP && node.op != ORU_DTL_OP_TRAVERSE)
        title += std::string("  ") + oru_dtl_tree_get_op_str(node.op);
    if (node.mr_info == nullptr)
        return title;
    if (node.mr_info->mr_meta != nullptr)
        title += "  " + text_of(oru_do_mr_meta_get_mr_fq_name(node.mr_info->mr_meta));
    if (node.mr_info->uri != nullptr)
        title += "  " + uri_words(node.mr_info->uri);
    return title;
}

std::vector<std::string> details_of(const ORUDtlNode &node) {
    Details details;
    const std::string prop = text_of(node.prop_name);
    if (prop != text_of(node.name))
        details.add("prop", prop);
    if (node.default_expr != nullptr) {
        const std::string text = node.default_expr;
        details.add("default", text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
    }
    const ORUDtlMrInfo *info = node.mr_info;
    const bool has_info = info != nullptr;
    if (has_info)
        add_reading(details, *info);
    details.add("order", has_info && info->order_param != nullptr ? info->order_param : "");
    details.add_number("batch-size", node.batch_size, has_info ? info->batch_size_param : nullptr);
    details.add_number("max-batches", node.max_batches,
                       has_info ? info->max_batches_param : nullptr);
    if (!has_info)
        return details.take();
    details.add_flag(info->return_mode == ORU_DTL_RETURN_ONE, "return one");
    details.add_flag(info->return_mode == ORU_DTL_RETURN_LAST, "return last");
    details.add_flag(info->return_w_child != 0, "return-w-child");
    details.add_flag(info->return_default == 0, "without defaults");
    details.add_flag(info->continue_on_error != 0, "continue-on-error");
    details.add_flag(info->flatten != 0, "flatten");
    if (info->act_name != nullptr) {
        const std::string params =
            info->act_in_params != nullptr ? parameters_words(info->act_in_params) : "";
        details.add("action", text_of(info->act_name) + (params.empty() ? "" : " with " + params));
    }
    return details.take();
}

std::vector<std::string> names_of(ORUDoNlist *list) {
    std::vector<std::string> names;
    for (EachName each(list); ORUDoName *name = each();)
        names.push_back(text_of(name));
    return names;
}

std::vector<std::string> names_of(ORUDoPropMetaList *list) {
    std::vector<std::string> names;
    const int32_t count = list != nullptr ? oru_do_prop_meta_list_get_len(list) : 0;
    for (int32_t i = 0; i < count; ++i)
        names.push_back(
            text_of(oru_do_prop_meta_get_name(oru_do_prop_meta_list_get_prop_meta(list, i))));
    return names;
}

}  // namespace oructl
