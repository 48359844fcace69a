// A back end that has something at every address.
#include <algorithm>

#include "tests/fuzz/dtl_fuzz.h"

namespace {

using namespace oru::test;
using fuzz::MadeUp;
using fuzz::Options;

uint8_t hash_of(uint8_t seed, const std::string &text) {
    uint8_t hash = seed;
    for (const char c : text)
        hash = static_cast<uint8_t>(hash * 31 + c);
    return hash;
}

FakeValue value_of(uint8_t seed, const std::string &address, const std::string &name) {
    const std::string below = address + "/" + name + ";id=1";
    switch (hash_of(seed, name) % 6) {
        case 0:
            return {};
        case 1:
            return int64_t{hash_of(seed, address)};
        case 2:
            return name;
        case 3:
            return UriText{below};
        case 4:
            return std::vector<UriText>{{below}, {"/"}, {address}};
        default:
            return below;
    }
}

Attributes attributes_of(uint8_t seed, const std::string &address, std::string_view names) {
    Attributes attributes;
    while (!names.empty()) {
        const std::string name(names.substr(0, names.find(',')));
        attributes[name] = value_of(seed, address, name);
        names.remove_prefix(std::min(names.size(), name.size() + 1));
    }
    return attributes;
}

// Rows below the address of a collection, "base?name" with more behind it.
std::vector<FakeRow> rows_of(const Options &options, const std::string &address,
                             std::string_view names) {
    const size_t query = address.find('?');
    const std::string base = address.substr(0, query);
    std::string name = query == std::string::npos ? "" : address.substr(query + 1);
    name = name.substr(0, name.find_first_of(":?"));
    std::vector<FakeRow> rows;
    for (int i = 0; i < options.rows(); ++i) {
        const std::string uri = base + "/" + name + ";id=" + std::to_string(i);
        rows.push_back({uri, attributes_of(options.seed(), uri, names)});
    }
    return rows;
}

bool may_have_rows(const std::string &address) {
    return std::count(address.begin(), address.end(), '/') <= fuzz::kMostRowSlashes;
}

// What is asked for: "kind address [names] ...".
struct Asked {
    std::string kind;
    std::string address{};
    std::string names{};

    explicit Asked(const std::string &call) : kind(call.substr(0, call.find(' '))) {
        if (kind.size() == call.size() || kind == "next")
            return;
        const size_t end = call.find(" [", kind.size() + 1);
        address = call.substr(kind.size() + 1, end - kind.size() - 1);
        const size_t close = end == std::string::npos ? end : call.find(']', end);
        if (close != std::string::npos)
            names = call.substr(end + 2, close - end - 2);
    }
    bool is_open() const { return kind.compare(0, 4, "open") == 0; }
};

// Makes up what the call that comes will look for.
void make_up(MadeUp &system, const Asked &asked) {
    const Options &options = system.options;
    if (asked.address.empty())
        return;
    if (system.calls == options.failing_call())
        system.failures[(asked.is_open() ? "open" : asked.kind) + " " + asked.address] =
            options.failure();
    if (!may_have_rows(asked.address))
        return;
    if (asked.is_open()) {
        system.rows[asked.address] = rows_of(options, asked.address, asked.names);
    } else if (hash_of(options.seed(), asked.address) % 8 != 0) {
        system.config[asked.address] = system.oper[asked.address] = attributes_of(
            options.seed(), asked.address, asked.names.empty() ? "_uri,mtu,name" : asked.names);
    }
}

void prepare(FakeSystem &asked) {
    auto &system = static_cast<MadeUp &>(asked);
    const Options &options = system.options;
    ++system.calls;
    for (const std::string &call : system.take_calls())
        make_up(system, Asked(call));
    if (system.calls == fuzz::kMostCalls ||
        (options.canceling_call() != 0 && system.calls == options.canceling_call()))
        system.context->canceled = 1;
}

}  // namespace

fuzz::MadeUp::MadeUp(const Options &chosen) : options(chosen) {
    before_call = prepare;
    batch = options.batch();
    late_end = options.flag(0);
    without_uri = options.flag(1);
    silent = options.flag(2);
    most_values = options.most_values();
    if (options.flag(3))
        context_uri = "//locations;locationId=x";
    if (options.flag(4))
        failures["next"] = options.failure();
    answer = {{"at", FakeValue(int64_t{5})}, {"errors", FakeValue("none")}};
}
