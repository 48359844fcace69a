#include "output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "command.h"
#include "database.h"
#include "output_text.h"
#include "terminal_text.h"
#include "value_text.h"

namespace oructl {
namespace {

const std::map<std::string, DataForm> kForms{
    {"table", DataForm::table}, {"tree", DataForm::tree},       {"text", DataForm::text},
    {"json", DataForm::json},   {"compact", DataForm::compact}, {"xml", DataForm::xml}};

std::string check_form(const std::string &form) {
    return kForms.count(form) != 0
               ? ""
               : form + " is no format; known are: table tree text json compact xml";
}

bool has_colours() {
    return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

size_t width_of(const std::string &text) {
    return static_cast<size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string line_of(const std::vector<std::string> &cells, const std::vector<size_t> &widths) {
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
        line += cells[i];
        if (i + 1 < cells.size())
            line += std::string(widths[i] - width_of(cells[i]) + 2, ' ');
    }
    return line;
}

// ---- JSON ----

bool is_json_safe(ORUDoValue *value) {
    int32_t status = ORU_OK;
    std::string text;
    if (oru_do_value_is_array(value) != 0) {
        EachValue each(oru_do_value_get_array(value, &status));
        ORUDoValue *element = each();
        while (element != nullptr && is_json_safe(element))
            element = each();
        return element == nullptr;
    }
    if (oru_do_value_get_type(value) == ORU_DO_TYPE_ENUMERATION)
        text = oru_do_value_get_enumeration(value, &status);
    else if (ORUDoUri *uri = oru_do_value_get_uri(value))
        text = oru_do_uri_get_uri_str(uri);
    return json_escaped(text) == text;
}

Value safe_value(ORUDoValue *value) {
    int32_t status = ORU_OK;
    if (is_json_safe(value))
        return Value(oru_do_value_ref(value));
    if (oru_do_value_is_array(value) != 0) {
        auto list = made<ValueList>(oru_do_vlist_new());
        for (EachValue each(oru_do_value_get_array(value, &status)); ORUDoValue *element = each();)
            oru_do_vlist_add(list.get(), safe_value(element).get());
        return made<Value>(oru_do_value_new_array(list.get()));
    }
    if (oru_do_value_get_type(value) == ORU_DO_TYPE_ENUMERATION)
        return made<Value>(oru_do_value_new_enumeration(
            json_escaped(oru_do_value_get_enumeration(value, &status)).c_str()));
    const Uri uri = json_safe(oru_do_value_get_uri(value));
    switch (oru_do_value_get_type(value)) {
        case ORU_DO_TYPE_MR_URI:
            return made<Value>(oru_do_value_new_mr_uri(uri.get()));
        case ORU_DO_TYPE_COLL_URI:
            return made<Value>(oru_do_value_new_coll_uri(uri.get()));
        default:
            return made<Value>(oru_do_value_new_any_uri(uri.get()));
    }
}

// ---- Resources ----

std::string lines_of(ORUDoProperties *props, const std::string &indent) {
    std::string lines;
    for (EachProperty each(props); ORUDoProperty *property = each();)
        lines += indent + oru_do_property_get_name_string(property) + " = " +
                 cell_text(oru_do_property_get_value(property)) + "\n";
    return lines;
}

std::string branch_of(ORUDoProperties *props) {
    std::string title;
    for (const char *name : {ORU_DO_NAME_URI, ORU_DO_NAME_MR}) {
        if (ORUDoValue *value = oru_do_properties_get_value(props, name))
            title += (title.empty() ? "" : "  ") + cell_text(value);
    }
    std::string lines = title + "\n";
    for (EachProperty each(props); ORUDoProperty *property = each();) {
        const std::string name = oru_do_property_get_name_string(property);
        if (name != ORU_DO_NAME_URI && name != ORU_DO_NAME_MR)
            lines += "  " + name + " = " + cell_text(oru_do_property_get_value(property)) + "\n";
    }
    return lines;
}

std::string column_table(ORUDoProperties *props) {
    TextTable table({"attribute", "value"});
    for (EachProperty each(props); ORUDoProperty *property = each();)
        table.add({oru_do_property_get_name_string(property),
                   cell_text(oru_do_property_get_value(property))});
    return table.draw();
}

std::string row_table(const std::vector<Properties> &rows, const std::vector<std::string> &names) {
    TextTable table(names);
    for (const Properties &props : rows) {
        std::vector<std::string> cells;
        for (const std::string &name : names)
            cells.push_back(cell_text(oru_do_properties_get_value(props.get(), name.c_str())));
        table.add(std::move(cells));
    }
    return table.draw();
}

}  // namespace

Uri json_safe(ORUDoUri *uri) {
    return made<Uri>(oru_do_uri_new(json_escaped(oru_do_uri_get_uri_str(uri)).c_str()));
}

Properties json_safe(ORUDoProperties *props) {
    auto safe = made<Properties>(oru_do_properties_new());
    for (EachProperty each(props); ORUDoProperty *property = each();) {
        const Value value = safe_value(oru_do_property_get_value(property));
        oru_do_properties_set_value(safe.get(), oru_do_property_get_name_string(property),
                                    value.get());
    }
    return safe;
}

void add_reading_options(CLI::App *command, DatabaseOptions &options, DataForm &form) {
    add_database_options(command, options);
    command
        ->add_option_function<std::string>(
            "-f,--format", [&form](const std::string &word) { form = kForms.at(word); },
            "table, tree, text, json, compact or xml")
        ->check(CLI::Validator(check_form, "FORM", "form"));
    command->add_flag("--show-secrets", options.show_secrets, "print secrets as they are kept");
}

TextTable::TextTable(std::vector<std::string> head) {
    add(std::move(head));
    head_ = std::move(rows_.back());
    rows_.pop_back();
}

void TextTable::add(std::vector<std::string> cells) {
    for (std::string &cell : cells)
        cell = shown_in_line(cell);
    rows_.push_back(std::move(cells));
}

std::string TextTable::draw() const {
    std::vector<size_t> widths(head_.size());
    for (size_t i = 0; i < head_.size(); ++i) {
        widths[i] = width_of(head_[i]);
        for (const auto &row : rows_)
            widths[i] = std::max(widths[i], width_of(row[i]));
    }
    const std::string head = line_of(head_, widths);
    std::string text = has_colours() ? "\033[1m" + head + "\033[0m\n" : head + "\n";
    for (const auto &row : rows_)
        text += line_of(row, widths) + "\n";
    return text;
}

std::string properties_json(ORUDoProperties *props, uint32_t options) {
    return shown(written([&](ORUDoStrbuf *buf) {
        oru_do_properties_to_json_opt(json_safe(props).get(), buf, options);
    }));
}

std::string resource_text(ORUDoProperties *props, DataForm form) {
    switch (form) {
        case DataForm::table:
            return column_table(props);
        case DataForm::tree:
            return shown(branch_of(props));
        case DataForm::text:
            return shown(lines_of(props, ""));
        case DataForm::json:
            return checked_json(properties_json(props, 0));
        case DataForm::compact:
            return checked_json(properties_json(props, ORU_JSON_OPT_COMPACT));
        default:
            return checked_xml(written(
                [&](ORUDoStrbuf *buf) { oru_do_properties_to_xml(nullptr, nullptr, props, buf); }));
    }
}

std::string resources_text(const std::vector<Properties> &rows,
                           const std::vector<std::string> &names, DataForm form) {
    if (form == DataForm::table)
        return row_table(rows, names);
    std::string text;
    const bool is_json = form == DataForm::json || form == DataForm::compact;
    for (const Properties &props : rows) {
        std::string one = resource_text(props.get(), form);
        if (is_json)
            one.pop_back();
        const char *between = is_json ? ",\n" : form == DataForm::text ? "\n" : "";
        text += (text.empty() ? "" : between) + one;
    }
    if (form == DataForm::json)
        return "{\"%properties_list\":[" + text + "]}\n";
    if (form == DataForm::compact)
        return "[" + text + "]\n";
    return form == DataForm::xml ? "<resources>\n" + text + "</resources>\n" : text;
}

}  // namespace oructl
