#include "wire_forms.h"

#include <oru/oru.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace oructl {
namespace {

constexpr bool kRequired = true;

constexpr Member kOperation[] = {
    {"mr_uri", Want::text, kRequired},
    {"op_code", Want::integer},
    {"props", Want::object, kRequired, "%properties"},
    {"child_ref_name", Want::text},
    {"mr_name", Want::text},
    {"lib_mr_name", Want::text},
    {"err", Want::nothing, false, "errors of operations are not read"},
};

constexpr Member kError[] = {
    {"code", Want::integer},
    {"msg", Want::text, kRequired},
    {"namespace", Want::text},
    {"cause", Want::object, false, "%error"},
    {"prop_errs", Want::object, false, "%prop_errs"},
};

constexpr Member kEvent[] = {
    {"name", Want::text, kRequired},
    {"mr_uri", Want::text, kRequired},
    {"time", Want::integer},
    {"sev", Want::integer},
    {"info", Want::object, kRequired, "%properties"},
};

constexpr Member kMrMeta[] = {
    {"pkg_name", Want::text, kRequired},
    {"pkg_version", Want::text},
    {"mr_name", Want::text, kRequired},
    {"max_access", Want::integer},
    {"prop_meta_list", Want::nothing, false, "properties of a resource are not read"},
};

constexpr Member kPropMeta[] = {
    {"prop_name", Want::text, kRequired},
    {"prop_category", Want::nothing, false, "this is read as \"category\" only"},
    {"category", Want::integer},
    {"primary_key", Want::integer},
    {"key_idx", Want::integer},
    {"type_code", Want::integer, kRequired},
    {"type_name", Want::text, kRequired},
    {"max_access", Want::integer},
    {"multiplicity", Want::integer},
    {"ref_role", Want::nothing, false, "this is read as \"targetRole\" only"},
    {"targetRole", Want::integer},
};

constexpr Member kConstraint[] = {
    {"condition", Want::text},
    {"constraint_str", Want::text, kRequired},
};

constexpr Member kTypedefMeta[] = {
    {"name", Want::text},
    {"simple_type", Want::text},
    {"constraint_list", Want::object, false, "%constraint_list"},
    {"enum", Want::object, false, "%nvlist"},
    {"sequence", Want::object, false, "%ntlist"},
    {"choice", Want::object, false, "%ntlist"},
};

constexpr Member kDtree[] = {
    {"name", Want::text, kRequired},        {"mr_uri", Want::text},
    {"err", Want::object, false, "%error"}, {"props", Want::object, false, "%properties"},
    {"children", Want::children},
};

template <class Number>
constexpr Form integers(const char *tag) {
    return {tag, Payload::integer, std::numeric_limits<Number>::min(),
            std::numeric_limits<Number>::max()};
}

constexpr Form list_of(const char *tag, const char *of) {
    return {.tag = tag, .payload = Payload::objects, .of = of};
}

constexpr Form record(const char *tag, std::span<const Member> members) {
    return {.tag = tag, .payload = Payload::record, .members = members};
}

constexpr Form kForms[] = {
    integers<uint8_t>("%ubyte"),
    integers<int8_t>("%byte"),
    integers<uint16_t>("%ushort"),
    integers<int16_t>("%short"),
    integers<uint32_t>("%uint"),
    integers<int32_t>("%int"),
    integers<uint64_t>("%ulong"),
    integers<int64_t>("%long"),
    {"%string", Payload::text},
    {"%boolean", Payload::boolean},
    {"%float", Payload::real},
    {"%double", Payload::real},
    integers<int64_t>("%datetime"),
    integers<int64_t>("%duration"),
    {"%any_uri", Payload::text},
    {"%hex_binary", Payload::hex},
    {"%ip_address", Payload::hex},
    {"%nsap_address", Payload::hex},
    {"%enumeration", Payload::text},
    {.tag = "%array", .payload = Payload::values, .may_be_empty = true},
    {"%choice", Payload::named_values},
    {"%sequence", Payload::named_values},
    {"%mr_uri", Payload::text},
    {"%coll_uri", Payload::text},
    {.tag = "%bits", .payload = Payload::values, .may_be_empty = true},
    {"%properties", Payload::named_values},
    {"%nlist", Payload::texts},
    {"%vlist", Payload::values},
    {"%nvlist", Payload::named_values},
    {.tag = "%ntlist", .payload = Payload::named_objects, .of = "%typedef_meta"},
    {.tag = "%config_ops",
     .payload = Payload::objects,
     .of = "%config_ops",
     .members = kOperation,
     .may_be_empty = true},
    list_of("%mr_meta_list", "%mr_meta"),
    record("%mr_meta", kMrMeta),
    list_of("%prop_meta_list", "%prop_meta"),
    record("%prop_meta", kPropMeta),
    list_of("%constraint_list", "%constraint"),
    record("%constraint", kConstraint),
    record("%error", kError),
    {.tag = "%prop_errs", .payload = Payload::named_objects, .of = "%error"},
    record("%event", kEvent),
    list_of("%properties_list", "%properties"),
    {"%null", Payload::null},
    {.tag = "%vtable", .payload = Payload::rows, .may_be_empty = true},
    record("%typedef_meta", kTypedefMeta),
    record("%dtree", kDtree),
};

constexpr std::string_view kReadUntagged[] = {"%mr_meta", "%prop_meta", "%constraint"};

const Form *form_of(std::string_view tag) {
    const auto *found =
        std::ranges::find_if(kForms, [&](const Form &form) { return form.is(tag); });
    return found != std::end(kForms) ? found : nullptr;
}

const oru_json_type_info *row_of(std::string_view tag) {
    return oru_json_get_type_info(tag.data(), static_cast<int32_t>(tag.size()));
}

}  // namespace

const Form *find_form(std::string_view tag) {
    if (std::ranges::find(kReadUntagged, tag) != std::end(kReadUntagged))
        return form_of(tag);
    const oru_json_type_info *row = row_of(tag);
    if (row == nullptr || is_function(tag))
        return nullptr;
    return form_of(oru_json_get_type_info_by_type_code(row->type_code)->tag);
}

std::string_view whole_tag(std::string_view tag) {
    const bool by_full_name = std::ranges::find(kReadUntagged, tag) != std::end(kReadUntagged);
    return by_full_name ? tag : row_of(tag)->tag;
}

bool is_value(const Form &form) {
    return row_of(form.tag)->value_type_code != ORU_DO_TYPE_UNKNOWN;
}

bool is_read_untagged(const Form &form) {
    return std::ranges::find(kReadUntagged, form.tag) != std::end(kReadUntagged);
}

bool is_tag(std::string_view key) {
    return key.starts_with('%') || is_function(key);
}

bool is_function(std::string_view tag) {
    return tag.size() >= 4 && tag.front() == '_' && tag.back() == ')';
}

std::vector<std::string> known_tags() {
    std::vector<std::string> tags;
    for (const Form &form : kForms)
        tags.emplace_back(form.tag);
    return tags;
}

std::string known_types() {
    std::string types;
    for (const Form &form : kForms)
        types += (types.empty() ? "" : " ") + std::string(form.tag + 1);
    return types;
}

}  // namespace oructl
