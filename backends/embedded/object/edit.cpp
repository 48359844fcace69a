#include "edit.h"

#include "oruembedded.h"
#include "typed.h"

namespace embedded {

namespace {

std::string text_of(ORUDoName *name) {
    return name != nullptr ? std::string(view(oru_do_name_get_strname(name))) : std::string();
}

std::string address_of(ORUDoConfigOp *operation) {
    ORUDoUri *const uri = oru_do_config_op_get_mr_uri(operation);
    return uri != nullptr ? std::string(view(oru_do_uri_get_uri_str(uri))) : std::string();
}

std::string unknown_words(const Draft &draft) {
    return "the resource is of the type " + draft.unknown_kind + ", which the model does not know";
}

bool is_absent(ORUDoValue *value) {
    if (value == nullptr)
        return true;
    const int32_t type = oru_do_value_get_type(value);
    return type == ORU_DO_TYPE_NULL || type == ORU_DO_TYPE_DEFAULT;
}

}  // namespace

void Edit::fault(int32_t code, const std::string &address, std::string rule, std::string attribute,
                 std::string expected, std::string got) {
    faults_.add({code, address, std::move(attribute), std::move(rule), std::move(expected),
                 std::move(got)});
}

void Edit::apply(ORUDoConfigOp *operation) {
    switch (oru_do_config_op_get_op_code(operation)) {
        case ORU_EMBEDDED_OP_CREATE:
            return create(operation);
        case ORU_EMBEDDED_OP_SET:
            return set(operation);
        case ORU_EMBEDDED_OP_DELETE:
            return erase(operation);
        default:
            fault(ORU_RC_UNSUPPORTED_FEATURE, address_of(operation), "unknown operation", {},
                  "create, set or delete", std::to_string(oru_do_config_op_get_op_code(operation)));
    }
}

/* The draft of the resource that the operation names, when there is one, and when the model knows
   its type. */
Draft *Edit::find(ORUDoConfigOp *operation, std::string &address, bool takes_unknown) {
    address = address_of(operation);
    const std::optional<Target> target = drafts_.resolve(address);
    if (!target) {
        fault(ORU_RC_NO_SUCH_RESOURCE, address, "the model has no such address");
        return nullptr;
    }
    address = label(target->place);
    Draft &draft = drafts_.at(target->place);
    if (draft.after.exists() || (takes_unknown && draft.is_there()))
        return &draft;
    if (draft.is_there())
        fault(ORU_RC_NO_SUCH_RESOURCE, address, unknown_words(draft));
    else
        fault(ORU_RC_NO_SUCH_RESOURCE, address, "there is no such resource");
    return nullptr;
}

bool Edit::is_denied(const ResourceType &type, uint8_t access, const std::string &address) {
    if (authority_ == Authority::system || (type.access & access) != 0)
        return false;
    const char *const verb = access == ORU_ACCESS_CREATE   ? "created"
                             : access == ORU_ACCESS_DELETE ? "deleted"
                                                           : "changed";
    fault(ORU_RC_ACCESS_DENIED, address,
          "resources of the type " + type.name + " cannot be " + verb);
    return true;
}

/* ---- Create ---- */

namespace {

/* Whether the library takes a text for an address: there are at most so many segments, and longest
   names. */
bool is_address(const std::string &text) {
    return certain(true, [&] {
        const Uri uri(oru_do_uri_validate_new(text.c_str()));
        return static_cast<bool>(uri);
    });
}

}  // namespace

/* The type that was asked for, or the only one that the reference allows. */
const ResourceType *Edit::choose_type(ORUDoConfigOp *operation, const ChildReference &reference,
                                      const std::string &address) {
    const std::string name = text_of(oru_do_config_op_get_mr_name(operation));
    const ResourceType *const type =
        name.empty() ? reference.target : drafts_.source().model->find(name);
    if (type == nullptr || !type->is_a(*reference.target)) {
        fault(ORU_RC_METADATA, address, "no type of resource for this reference", {},
              reference.target->name, name);
        return nullptr;
    }
    if (!type->is_library)
        return type;
    std::string expected;
    for (const ResourceType *implementation : type->implementations)
        expected += (expected.empty() ? "" : ", ") + implementation->name;
    fault(ORU_RC_LIB_MR_NOT_IMPLEMENTED, address, "the type is abstract", {}, expected, type->name);
    return nullptr;
}

/* Completes the place by the keys among the properties. */
bool Edit::add_keys(ORUDoProperties *props, const ResourceType &type, Place &place) {
    const std::string collection = label(place);
    bool is_complete = true;
    for (size_t i = 0; i < type.key_count; i++) {
        const AttributeType &key = type.attributes[i];
        ORUDoValue *const value =
            props != nullptr ? oru_do_properties_get_value_n(props, key.object.get()) : nullptr;
        if (is_absent(value)) {
            fault(ORU_RC_PROPERTY, collection, "a key is missing", key.name);
            is_complete = false;
        } else if (!add_key_value(place, key, value)) {
            fault(ORU_RC_TYPE_MISMATCH, collection, "a key of another type", key.name,
                  std::string(view(oru_do_get_typestr_by_typecode(key.type))), shown(key, value));
            is_complete = false;
        }
    }
    return is_complete;
}

void Edit::create(ORUDoConfigOp *operation) {
    std::string parent_address;
    const Draft *const parent = find(operation, parent_address);
    if (parent == nullptr)
        return;
    const std::string name = text_of(oru_do_config_op_get_child_ref_name(operation));
    const ChildReference *const reference = parent->after.type->find_child(name);
    if (reference == nullptr)
        return fault(ORU_RC_NO_SUCH_REFERENCE, parent_address,
                     "the type " + parent->after.type->name + " has no children \"" + name + "\"");
    Place place = below(parent->place, name);
    const ResourceType *const type = choose_type(operation, *reference, label(place));
    ORUDoProperties *const props = oru_do_config_op_get_props(operation);
    if (type == nullptr || !add_keys(props, *type, place))
        return;
    const std::string address = label(place);
    if (is_denied(*type, ORU_ACCESS_CREATE, address))
        return;
    if (!is_address(address))
        return fault(ORU_RC_INVALID_URI, label(below(parent->place, name)),
                     "the keys make no address");
    if (place.key.size() > drafts_.source().store->limits().key_bytes)
        return fault(ORU_RC_INVALID_URI, label(below(parent->place, name)),
                     "the keys are too long for the store");
    Draft &draft = drafts_.at(place);
    if (draft.after.exists())
        return fault(ORU_RC_RESOURCE_EXISTS, address, "the resource exists already");
    if (draft.is_there())
        return fault(ORU_RC_RESOURCE_EXISTS, address, unknown_words(draft));
    draft.is_touched = true;
    draft.is_made_anew = draft.before.exists();
    draft.after.type = type;
    draft.after.props = made<Properties>(oru_do_properties_new());
    give(draft, props);
    drafts_.note_change(draft);
}

/* ---- Set ---- */

void Edit::set(ORUDoConfigOp *operation) {
    std::string address;
    Draft *const draft = find(operation, address);
    if (draft == nullptr || is_denied(*draft->after.type, ORU_ACCESS_UPDATE, address))
        return;
    draft->is_touched = true;
    give(*draft, oru_do_config_op_get_props(operation));
    drafts_.note_change(*draft);
}

void Edit::give(Draft &draft, ORUDoProperties *props) {
    EachProperty each(props);
    while (ORUDoProperty *property = each()) {
        const std::string_view name = view(oru_do_property_get_name_string(property));
        if (oru_attribute_is_builtin(name.data()) != 0)
            continue;
        const AttributeType *const attribute = draft.after.type->find_attribute(name);
        if (attribute == nullptr)
            fault(ORU_RC_NO_SUCH_ATTRIBUTE, label(draft.place), "no such attribute",
                  std::string(name));
        else
            give(draft, *attribute, oru_do_property_get_value(property));
    }
}

void Edit::give(Draft &draft, const AttributeType &attribute, ORUDoValue *value) {
    if (attribute.role == AttributeType::Role::oper && authority_ != Authority::system)
        return fault(ORU_RC_ACCESS_DENIED, label(draft.place), "operational data is not configured",
                     attribute.name);
    const Value given = is_absent(value) ? Value() : in_type_of(attribute, value);
    // what has its keys stands at its place, also when it was made by the same change
    const Value key =
        attribute.role == AttributeType::Role::key ? draft.after.value(attribute) : Value();
    if (key) {
        if (!given || oru_do_value_equals(given.get(), key.get()) == 0)
            fault(ORU_RC_ACCESS_DENIED, label(draft.place), "keys cannot be changed",
                  attribute.name, shown(attribute, key.get()),
                  given ? shown(attribute, given.get()) : std::string("nothing"));
        return;
    }
    draft.note_given(attribute);
    set_property(draft.after.props, attribute, given);
}

/* ---- Delete ---- */

void Edit::erase(ORUDoConfigOp *operation) {
    std::string address;
    Draft *const draft = find(operation, address, authority_ == Authority::system);
    if (draft == nullptr ||
        (draft->after.exists() && is_denied(*draft->after.type, ORU_ACCESS_DELETE, address)))
        return;
    const Place place = draft->place;
    if (place.depth() == 0)
        return fault(ORU_RC_ACCESS_DENIED, address, "the root cannot be deleted");
    for (size_t levels = 1; place.depth() + levels <= kMaxDepth; levels++)
        drafts_.read(descendants_of(place, levels));
    for (Draft *each : drafts_.below(place)) {
        each->is_touched = true;
        each->is_dropped = !each->unknown_kind.empty();
        each->after = {};
        each->given.clear();
        drafts_.note_change(*each);
    }
}

/* ---- Words ---- */

std::string shown(const AttributeType &attribute, ORUDoValue *value) {
    constexpr size_t kMost = 80;
    if (attribute.is_secret())
        return "<removed>";
    const Buffer buffer = made<Buffer>(oru_do_strbuf_new());
    oru_do_value_to_strbuf_opt(value, 0, buffer.get(), ORU_DO_OPT_HIDE_SECRETS);
    std::string text = text_in(buffer);
    if (text.size() > kMost) {
        size_t end = kMost;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
            end--;  // not within a character
        text = text.substr(0, end) + "...";
    }
    return text.empty() ? "an empty value" : text;
}

}  // namespace embedded
