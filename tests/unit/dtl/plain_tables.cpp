// The back end of the plain walk: what the recording fake answers, and how it writes it down.
#include "tests/unit/dtl/plain_walk.h"

namespace oru::test {
namespace {

FakeValue value_in(const Attributes &attributes, const std::string &name) {
    const auto found = attributes.find(name);
    return found == attributes.end() ? FakeValue() : found->second;
}

}  // namespace

int32_t PlainWalk::outcome(const std::string &call) {
    error_.reset();
    if (tables_.provide && call.find(' ') != std::string::npos)
        tables_.provide(call.substr(call.find(' ') + 1));
    const auto failure = tables_.failures.find(call);
    if (failure == tables_.failures.end())
        return 0;
    if (!tables_.silent)
        error_ = failure->second;
    return failure->second;
}

void PlainWalk::take_error(PlainNode &node) const {
    if (error_)
        node.error = {*error_, "failed"};
}

int32_t PlainWalk::read(bool oper, const std::string &uri, const Names &names, bool defaults,
                        Values &values) {
    std::string list;
    for (const std::string &name : names)
        list += (list.empty() ? "" : ",") + name;
    const std::string kind = oper ? "oper " : "cfg ";
    calls_.push_back(kind + uri + " [" + list + "]" + (defaults ? "" : " no defaults"));
    if (const int32_t rc = outcome(kind + uri); rc != 0)
        return rc;
    const auto &from = oper ? tables_.oper : tables_.config;
    const auto found = from.find(uri);
    if (found == from.end())
        return 102;
    for (const std::string &name : names) {
        if (values.size() < tables_.most_values)
            values.push_back(value_in(found->second, name));
    }
    return 0;
}

int32_t PlainWalk::read_properties(bool oper, const std::string &uri, PlainNode &into) {
    const std::string call = (oper ? "oper_props " : "cfg_props ") + uri;
    calls_.push_back(call);
    if (const int32_t rc = outcome(call); rc != 0)
        return rc;
    const auto &from = oper ? tables_.oper : tables_.config;
    const auto found = from.find(uri);
    if (found == from.end())
        return 102;
    for (const auto &[name, value] : found->second)
        into.set(name, value);
    return 0;
}

int32_t PlainWalk::cursor_next(Cursor &cursor, int32_t count, std::vector<Values> &rows) {
    const auto asked = static_cast<uint32_t>(count);
    calls_.push_back("next " + std::to_string(asked));
    if (const int32_t rc = outcome("next"); rc != 0)
        return rc;
    const size_t most = asked != 0 ? asked : tables_.batch != 0 ? tables_.batch : SIZE_MAX;
    while (cursor.at < cursor.rows.size() && rows.size() < most) {
        const FakeRow &row = cursor.rows[cursor.at++];
        Values values;
        for (const std::string &name : cursor.names) {
            values.push_back(name == "_uri" && !tables_.without_uri
                                 ? FakeValue(UriText{row.uri})
                                 : value_in(row.attributes, name));
        }
        rows.push_back(values);
    }
    return cursor.at == cursor.rows.size() && (!tables_.late_end || rows.empty()) ? 1 : 0;
}

}  // namespace oru::test
