// Constraints of any type from any text, under any condition: read, evaluated with values and
// properties, read again with another type, printed and sent through JSON. The first byte says
// which type, then stands the text up to a zero byte, then the condition.
#include <oru/condition.h>
#include <oru/constraint.h>
#include <oru/error.h>
#include <oru/json.h>
#include <oru/nlist.h>
#include <oru/typedef_meta.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

struct Release : fuzz::Release {
    using fuzz::Release::operator();
    void operator()(ORUDoCondition *object) const { oru_do_condition_deref(object); }
    void operator()(ORUDoConstraint *object) const { oru_do_constraint_deref(object); }
    void operator()(ORUDoConstraintList *object) const { oru_do_constraint_list_deref(object); }
    void operator()(ORUDoError *object) const { oru_do_error_deref(object); }
    void operator()(ORUDoNlist *object) const { oru_do_nlist_deref(object); }
    void operator()(ORUDoTypedefMeta *object) const { oru_do_typedef_meta_deref(object); }
};

template <class Object>
using Own = std::unique_ptr<Object, Release>;

constexpr int32_t kTypes[] = {-3, 0, 1, 4, 5, 7, 8, 9, 11, 12, 15, 101, 103, 105, 107};

// Labels of an even length are known.
ORUDoValue *resolve(const char *name) {
    static ORUDoValue *const known = oru_do_value_new_int(5);
    CHECK(std::strchr(name, '/') != nullptr);
    return std::strlen(name) % 2 == 0 ? known : nullptr;
}

Own<ORUDoVlist> list_of_numbers() {
    Own<ORUDoVlist> list(oru_do_vlist_new());
    for (int64_t n : {1, 5, 9})
        oru_do_vlist_add_long(list.get(), n);
    return list;
}

// One value of each kind; the last is null.
std::vector<Own<ORUDoValue>> values(const std::string &text) {
    const auto numbers = list_of_numbers();
    std::vector<Own<ORUDoValue>> all;
    for (ORUDoValue *made :
         {oru_do_value_new_long(5), oru_do_value_new_unsigned_byte(200),
          oru_do_value_new_double(0.5), oru_do_value_new_boolean(1), oru_do_value_new_string("abc"),
          oru_do_value_new_string(text.c_str()), oru_do_value_new_enumeration("up"),
          oru_do_value_new_ip_address("\x0a\0\0\1", 4), oru_do_value_new_array(numbers.get()),
          oru_do_value_new_default(), oru_do_value_new_null()})
        all.emplace_back(made);
    all.emplace_back(nullptr);
    return all;
}

Own<ORUDoProperties> table() {
    Own<ORUDoProperties> props(oru_do_properties_new());
    oru_do_properties_set_int(props.get(), "a", 5);
    oru_do_properties_set_string(props.get(), "b", "abc");
    oru_do_properties_set_null(props.get(), "c");
    return props;
}

bool is_code(int32_t code) {
    return code == 0 || (code >= 113 && code <= 116) || code == 131;
}

void evaluate(ORUDoConstraint *constraint, const std::string &text) {
    const Own<ORUDoName> name(oru_do_name_new("a"));
    const auto props = table();
    for (auto *each : {props.get(), static_cast<ORUDoProperties *>(nullptr)}) {
        const bool applies = oru_do_constraint_is_applicable(constraint, name.get(), each) != 0;
        for (const auto &value : values(text)) {
            const int32_t code = oru_do_constraint_eval(constraint, name.get(), value.get(), each);
            CHECK(is_code(code));
            CHECK(applies || code == 131);
            CHECK(oru_do_constraint_eval(constraint, name.get(), value.get(), each) == code);
        }
        auto *held = oru_do_constraint_get_default_value(constraint);
        CHECK(oru_do_constraint_get_default(constraint, name.get(), each) ==
              (applies ? held : nullptr));
    }
}

void check_parts(ORUDoConstraint *constraint) {
    const char *text = oru_do_constraint_get_str(constraint);
    CHECK(text != nullptr && std::strchr(text, ' ') == nullptr);
    const bool has_default = oru_do_constraint_get_default_value(constraint) != nullptr;
    const bool has_condition = oru_do_constraint_get_condition(constraint) != nullptr;
    CHECK(oru_do_constraint_get_type(constraint) == (has_default ? (has_condition ? 1 : 0) : -1));
    for (auto *range :
         {oru_do_constraint_get_size(constraint), oru_do_constraint_get_strlen(constraint)}) {
        auto *first = range != nullptr ? oru_do_range_get_first_value(range) : nullptr;
        CHECK(first == nullptr || oru_do_value_get_type(first) == ORU_DO_TYPE_LONG);
    }
    if (const char *pattern = oru_do_constraint_get_regex(constraint))
        CHECK(std::strpbrk(pattern, "()\" ") == nullptr);
}

void try_again_with(ORUDoConstraint *constraint, int32_t type, const std::string &text) {
    const Own<ORUDoName> name(oru_do_name_new("T"));
    const Own<ORUDoTypedefMeta> meta(oru_do_typedef_meta_new_simpletype(name.get(), type, nullptr));
    oru_do_constraint_set_typedef_meta(constraint, meta.get(), resolve);
    check_parts(constraint);
    if (auto *value = oru_do_constraint_get_default_value(constraint))
        CHECK(std::strcmp(oru_do_value_get_typedef_name(value), "T") == 0);
    evaluate(constraint, text);
}

void try_list(ORUDoConstraint *constraint) {
    const Own<ORUDoConstraintList> list(oru_do_constraint_list_new());
    CHECK(oru_do_constraint_list_add(list.get(), constraint) == 1);
    CHECK(oru_do_constraint_list_get_default_type(list.get()) ==
          oru_do_constraint_get_type(constraint));
    ORUDoNlist *names = nullptr;
    for (int32_t kind : {-1, 0, 1})
        CHECK(oru_do_constraint_list_get_cond_prop_names(list.get(), kind, &names) == 0);
    const Own<ORUDoNlist> owner(names);
    const Own<ORUDoStrbuf> buf(oru_do_strbuf_new());
    oru_do_constraint_list_to_strbuf(list.get(), buf.get());
    oru_do_strbuf_clear(buf.get());
    oru_do_constraint_list_to_json(list.get(), buf.get());
    ORUDoError *error = nullptr;
    const Own<ORUDoConstraintList> back(oru_do_constraint_list_from_json(
        oru_do_strbuf_to_string(buf.get()), oru_do_strbuf_get_len(buf.get()), &error));
    const Own<ORUDoError> error_owner(error);
    auto *read = back ? oru_do_constraint_list_get_constraint(back.get(), 0) : nullptr;
    if (read != nullptr)
        CHECK(std::strcmp(oru_do_constraint_get_str(read), oru_do_constraint_get_str(constraint)) ==
              0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0 || size > 4096)
        return 0;
    resolve("a/");
    const uint64_t blocks = poolheap_live_blocks();
    const int32_t type = kTypes[data[0] % std::size(kTypes)];
    const auto *begin = reinterpret_cast<const char *>(data + 1);
    const auto *end = begin + size - 1;
    const auto *cut = std::find(begin, end, '\0');
    const std::string text(begin, cut);
    {
        const Own<ORUDoCondition> condition(
            cut != end ? oru_do_condition_new(std::string(cut + 1, end).c_str()) : nullptr);
        const Own<ORUDoConstraint> constraint(
            oru_do_constraint_new_t(condition.get(), text.c_str(), type, resolve));
        check_parts(constraint.get());
        evaluate(constraint.get(), text);
        try_list(constraint.get());
        try_again_with(constraint.get(), kTypes[(data[0] + 1u) % std::size(kTypes)], text);
    }
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
