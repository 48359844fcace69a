#include "reads.h"

#include "reader.h"

namespace behaviour {
namespace {

// What a request names: an address, and the words behind it.
struct Subject {
    std::string address;
    Lines names;
};

Subject read_subject(Reader &reader) {
    Subject subject;
    subject.address = reader.word();
    subject.names = reader.words();
    return subject;
}

Reader reader_of(const Step &step) {
    Reader reader(step.request.text);
    reader.word();
    return reader;
}

Lines named_values(ORUDataIfc *data, ORUDoUri *uri, const Subject &subject,
                   const ReadOptions &options) {
    const NameList names = made<NameList>(oru_do_nlist_new());
    for (const std::string &name : subject.names)
        oru_do_nlist_add_string(names.get(), name.c_str());
    const ValueList values = made<ValueList>(oru_do_vlist_new());
    const int32_t code =
        options.is_operational
            ? data->get_oper_prop_values(data, uri, names.get(), values.get())
            : data->get_cfg_prop_values(data, uri, names.get(), options.return_defaults ? 1 : 0,
                                        values.get());
    if (code != ORU_OK)
        return {text_of_code(code)};
    std::string line;
    EachValue each(values.get());
    for (const std::string &name : subject.names)
        line += (line.empty() ? "" : "  ") + name + "=" + text_of(each(), options.shows_types);
    return {line};
}

Lines all_properties(ORUDataIfc *data, ORUDoUri *uri, const ReadOptions &options) {
    const Properties props = made<Properties>(oru_do_properties_new());
    const auto get = options.is_operational ? data->get_oper_props : data->get_cfg_props;
    const int32_t code = get(data, uri, nullptr, props.get());
    if (code != ORU_OK)
        return {text_of_code(code)};
    Lines lines;
    EachProperty each(props.get());
    while (ORUDoProperty *property = each())
        lines.push_back(std::string(oru_do_property_get_name_string(property)) + "=" +
                        text_of(oru_do_property_get_value(property), options.shows_types));
    return lines;
}

}  // namespace

Lines ReadRequests::read(const Step &step) {
    Reader reader = reader_of(step);
    const Subject subject = read_subject(reader);
    const ReadOptions options = read_options(step.details);
    ORUDataIfc *const data = back_end_.session(options.shows_secrets)->data;
    const Uri uri = made<Uri>(oru_do_uri_new(full_address(subject.address).c_str()));
    return subject.names.empty() ? all_properties(data, uri.get(), options)
                                 : named_values(data, uri.get(), subject, options);
}

Lines ReadRequests::invoke(const Step &step) {
    Reader reader = reader_of(step);
    const Uri uri = made<Uri>(oru_do_uri_new(full_address(reader.word()).c_str()));
    const Name action = made<Name>(oru_do_name_new(reader.word().c_str()));
    const Properties in = made<Properties>(oru_do_properties_new());
    const Properties out = made<Properties>(oru_do_properties_new());
    ORUDataIfc *const data = back_end_.session(false)->data;
    return {text_of_code(data->invoke_action(data, uri.get(), action.get(), in.get(), out.get()))};
}

Lines ReadRequests::rows(const Step &step) {
    Reader reader = reader_of(step);
    const Subject subject = read_subject(reader);
    const ReadOptions options = read_options(step.details);
    const Lines rows = Cursor(back_end_, subject.address, subject.names, options).all(0);
    for (const uint32_t count : {1U, 2U, 3U, 1000U}) {
        Lines others = Cursor(back_end_, subject.address, subject.names, options).all(count);
        if (others == rows)
            continue;
        others.insert(others.begin(), "batches of " + std::to_string(count) + " differ:");
        return others;
    }
    return options.is_total ? Lines{std::to_string(rows.size())} : rows;
}

Lines ReadRequests::open(const Step &step) {
    Reader reader = reader_of(step);
    const std::string name = reader.word();
    const Subject subject = read_subject(reader);
    auto opened = std::make_unique<Cursor>(back_end_, subject.address, subject.names,
                                           read_options(step.details));
    const int32_t code = opened->code();
    if (code != ORU_OK)
        return {text_of_code(code)};
    cursors_[name] = std::move(opened);
    return {};
}

Cursor &ReadRequests::cursor(const std::string &name) {
    const auto at = cursors_.find(name);
    if (at == cursors_.end())
        throw ScriptFault("there is no cursor \"" + name + "\"");
    return *at->second;
}

/* Batches may be smaller than what was asked for, as long as more may follow. */
Lines ReadRequests::next(const Step &step) {
    Reader reader = reader_of(step);
    Cursor &from = cursor(reader.word());
    const auto count = static_cast<size_t>(std::atoi(reader.word().c_str()));
    Lines lines;
    while (lines.size() < count && from.may_have_more()) {
        const Lines batch = from.next(static_cast<uint32_t>(count - lines.size()));
        lines.insert(lines.end(), batch.begin(), batch.end());
    }
    if (lines.size() < count)
        lines.emplace_back("end");
    return lines;
}

Lines ReadRequests::close(const Step &step) {
    Reader reader = reader_of(step);
    const std::string name = reader.word();
    cursor(name);
    cursors_.erase(name);
    return {};
}

}  // namespace behaviour
