// Values of every type from any text. Three lines, each a letter for the type and a text, and the
// name of a derived type in the fourth. A line that is missing repeats the first.
#include "tests/fuzz/value_fuzz.h"

#include <oruplatform/poolheap.h>

#include <vector>

namespace {

using namespace fuzz;

// ---- Values that hold values ----

Value array_of(const std::vector<Value> &values) {
    const List list(oru_do_vlist_new());
    for (const Value &value : values)
        oru_do_vlist_add(list.get(), value.get());
    return Value(oru_do_value_new_array(list.get()));
}

Value sequence_of(const std::vector<Value> &values, const std::string &name) {
    const Keys list(oru_do_nvlist_new());
    for (const Value &value : values)
        oru_do_nvlist_add(list.get(), name.c_str(), value.get());
    return Value(oru_do_value_new_sequence(list.get()));
}

void add_containers(std::vector<Value> &values, const std::string &name) {
    values.push_back(array_of(values));
    values.push_back(sequence_of(values, name));
    const Keys list(oru_do_nvlist_new_from_item("c", values.front().get()));
    values.emplace_back(oru_do_value_new_choice(list.get()));
    values.push_back(array_of(values));
}

void name_type(const std::vector<Value> &values, const std::string &name) {
    for (const Value &value : values) {
        oru_do_value_set_typedef_name(value.get(), Text(name).get());
        CHECK(name == oru_do_value_get_typedef_name(value.get()));
        const Bytes bytes(name);
        oru_do_value_set_typedef_name_l(value.get(), bytes.get(), bytes.size());
        CHECK(name == oru_do_value_get_typedef_name(value.get()));
    }
}

void check_all(const std::vector<Value> &values) {
    for (const Value &value : values) {
        check_forms(value.get());
        check_reading(value.get());
        for (const Value &other : values)
            check_pair(value.get(), other.get());
    }
    if (values.size() > 2)
        check_triple(values[0].get(), values[1].get(), values[2].get());
}

// A derived type changes the forms, and nothing else: a name for one of two equal values.
void check_named(const std::vector<Value> &values, const std::string &name) {
    const Value plain(oru_do_value_clone(values[0].get()));
    name_type(values, name);
    CHECK(oru_do_value_equals(plain.get(), values[0].get()) != 0);
    for (const Value &value : values) {
        check_forms(value.get());
        check_reading(value.get());
        check_pair(plain.get(), value.get());
    }
}

void try_lines(const std::array<std::string, 4> &lines, ORUDoMrMeta *meta) {
    std::vector<Value> values;
    const std::string type_name = until_zero(lines[3]);
    for (size_t i = 0; i < 3; ++i) {
        const std::string &line = lines[i].empty() ? lines[0] : lines[i];
        const std::string raw = line.empty() ? line : line.substr(1);
        const Sample sample{type_of(line.empty() ? '\0' : line[0]), until_zero(raw)};
        try_making(sample, meta);
        Value value = parsed(sample.type, sample.text);
        check_prefix(sample, value);
        if (value)
            values.push_back(std::move(value));
        Value direct = made(sample, raw);
        // A text does not go past a zero, bytes do.
        const bool is_text = sample.type == 8 || sample.type == 103;
        if (direct && (!is_text || sample.text.size() == raw.size()))
            values.push_back(std::move(direct));
    }
    if (values.empty())
        return;
    add_containers(values, type_name);
    oru_do_value_set_flags(values[0].get(), static_cast<uint8_t>(lines[0].size()));
    check_all(values);
    if (!type_name.empty())
        check_named(values, type_name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const MrMeta meta = described_types();
    const uint64_t blocks = poolheap_live_blocks();
    try_lines(lines_of<4>(data, size), meta.get());
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
