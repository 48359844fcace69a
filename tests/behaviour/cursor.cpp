#include "cursor.h"

#include "reader.h"

namespace behaviour {
namespace {

void read_option(const std::string &text, ReadOptions &options) {
    Reader reader(text);
    if (reader.takes("where")) {
        if (options.where == nullptr)
            options.where = made<NameValueList>(oru_do_nvlist_new());
        reader.where(options.where.get());
    } else if (reader.takes("order"))
        options.order = reader.order();
    else if (reader.takes("without defaults"))
        options.return_defaults = false;
    else if (reader.takes("operational"))
        options.is_operational = true;
    else if (reader.takes("show secrets"))
        options.shows_secrets = true;
    else if (reader.takes("show types"))
        options.shows_types = true;
    else if (reader.takes("total"))
        options.is_total = true;
    if (!reader.at_end())
        throw ScriptFault("a request is no \"" + text + "\"");
}

// The address, and the values that were asked for.
std::string text_of_row(ORUDoVlist *row, bool shows_types) {
    EachValue each(row);
    std::string text = text_of(each());
    each();
    while (ORUDoValue *value = each())
        text += "  " + text_of(value, shows_types);
    return text;
}

}  // namespace

ReadOptions read_options(const std::vector<Line> &details) {
    ReadOptions options;
    for (const Line &line : details)
        at_line(line, [&] { read_option(line.text, options); });
    return options;
}

Cursor::Cursor(const BackEnd &back_end, const std::string &collection, const Lines &names,
               const ReadOptions &options)
    : shows_types_(options.shows_types), is_operational_(options.is_operational) {
    const Uri uri = made<Uri>(oru_do_uri_new(full_address(collection).c_str()));
    const NameList columns = made<NameList>(oru_do_nlist_new());
    oru_do_nlist_add_string(columns.get(), ORU_DO_NAME_URI);
    oru_do_nlist_add_string(columns.get(), ORU_DO_NAME_MR);
    for (const std::string &name : names)
        oru_do_nlist_add_string(columns.get(), name.c_str());
    ORUCollIfc *const coll = back_end.session(options.shows_secrets)->coll;
    code_ = is_operational_
                ? coll->new_oper_cursor(coll, uri.get(), columns.get(), options.where.get(),
                                        options.order.get(), &cursor_)
                : coll->new_config_cursor(coll, uri.get(), columns.get(), options.where.get(),
                                          options.order.get(), options.return_defaults ? 1 : 0,
                                          &cursor_);
}

Cursor::~Cursor() {
    if (cursor_ != nullptr)
        cursor_->cursor_close(cursor_);
}

Lines Cursor::next(uint32_t count) {
    const Table table = made<Table>(oru_do_vtable_new());
    code_ = cursor_->cursor_get_next(cursor_, count, table.get());
    Lines lines;
    EachRow each(table.get());
    while (ORUDoVlist *row = each())
        lines.push_back(text_of_row(row, shows_types_));
    if (count != 0 && lines.size() > count)
        lines.emplace_back("the batch has more than " + std::to_string(count) + " rows");
    if (code_ > ORU_RC_NO_MORE_VALUE)
        lines.push_back(text_of_code(code_));
    return lines;
}

/* A cursor over configuration is asked once where the number is left to it. */
Lines Cursor::all(uint32_t count) {
    if (code_ != ORU_OK)
        return {text_of_code(code_)};
    Lines lines;
    do {
        const Lines batch = next(count);
        lines.insert(lines.end(), batch.begin(), batch.end());
    } while (may_have_more() && (count != 0 || is_operational_));
    return lines;
}

}  // namespace behaviour
