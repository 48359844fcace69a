#include "model.h"

#include <algorithm>
#include <array>

#include "support/value_type.h"

namespace embedded {

namespace {

/* A qualified name without its version: "package:1.0/Name" is "package/Name". */
std::string without_version(std::string_view name) {
    const size_t colon = name.find(':');
    const size_t slash = name.find('/');
    if (colon == std::string_view::npos || slash == std::string_view::npos || slash < colon)
        return std::string(name);
    return std::string(name.substr(0, colon)) + std::string(name.substr(slash));
}

std::string_view text_of(ORUDoName *name) {
    return name != nullptr ? view(oru_do_name_get_strname(name)) : std::string_view();
}

bool is_many(ORUDoPropMeta *meta) {
    return oru_do_prop_meta_get_multiplicity(meta) == ORU_MULTIPLICITY_MANY;
}

/* The constraints of the property, and those of its type. */
std::array<ORUDoConstraintList *, 2> constraints_of(ORUDoPropMeta *meta) {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta);
    return {oru_do_prop_meta_get_constraint_list(meta),
            type != nullptr ? oru_do_typedef_meta_get_constraint_list(type) : nullptr};
}

/* A value that says of itself that nobody set it. */
Value flagged_as_default(ORUDoValue *value) {
    Value copy = made_value(oru_do_value_clone(value));
    const char *const type_name = oru_do_value_get_typedef_name(value);
    if (type_name != nullptr)
        set_type_name(copy, type_name);
    oru_do_value_set_default_flag(copy.get());
    return copy;
}

Value find_default(const AttributeType &attribute, ORUDoProperties *props) {
    for (ORUDoConstraintList *list : constraints_of(attribute.meta.get())) {
        ORUDoValue *const value = list != nullptr ? oru_do_constraint_list_get_default(
                                                        list, attribute.object.get(), props)
                                                  : nullptr;
        if (value != nullptr)
            return flagged_as_default(value);
    }
    return {};
}

void read_default(AttributeType &attribute) {
    bool is_conditional = false;
    for (ORUDoConstraintList *list : constraints_of(attribute.meta.get())) {
        if (list == nullptr ||
            oru_do_constraint_list_get_default_type(list) != ORU_CONSTRAINT_CONDITIONAL_DEFAULT)
            continue;
        is_conditional = true;
        ORUDoNlist *names = nullptr;
        const int32_t code = oru_do_constraint_list_get_cond_prop_names(
            list, ORU_CONSTRAINT_CONDITIONAL_DEFAULT, &names);
        const NameList held(names);
        if (code != ORU_OK)
            throw std::bad_alloc();
        EachName each(names);
        while (ORUDoName *name = each())
            attribute.default_depends_on.emplace_back(text_of(name));
    }
    if (!is_conditional)
        attribute.default_value = find_default(attribute, nullptr);
}

std::string_view type_name_of(ORUDoPropMeta *meta) {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta);
    return type != nullptr ? text_of(oru_do_typedef_meta_get_name(type)) : std::string_view();
}

}  // namespace

Secrecy secrecy_of(std::string_view type_name) {
    if (type_name.starts_with("PasswordString"))
        return Secrecy::hashed;
    return type_name.starts_with("EncryptedString") ? Secrecy::sealed : Secrecy::none;
}

const ValueType::Member *ValueType::find(std::string_view member) const {
    for (const Member &each : members) {
        if (text_of(each.name.get()) == member)
            return &each;
    }
    return nullptr;
}

Value AttributeType::default_under(ORUDoProperties *props) const {
    return default_depends_on.empty() ? default_value : find_default(*this, props);
}

const AttributeType *ResourceType::find_attribute(std::string_view attribute) const {
    const auto at = by_name.find(attribute);
    return at != by_name.end() ? &attributes[at->second] : nullptr;
}

const ChildReference *ResourceType::find_child(std::string_view reference) const {
    for (const ChildReference &child : children) {
        if (child.name == reference)
            return &child;
    }
    for (const ResourceType *implementation : implementations) {
        if (const ChildReference *child = implementation->find_child(reference))
            return child;
    }
    return nullptr;
}

bool ResourceType::leaves_open(std::string_view reference) const {
    const ChildReference *const first = find_child(reference);
    return std::any_of(
        implementations.begin(), implementations.end(), [&](const ResourceType *implementation) {
            const ChildReference *const child = implementation->find_child(reference);
            return child != nullptr && child->target != first->target;
        });
}

bool ResourceType::is_a(const ResourceType &other) const {
    if (this == &other)
        return true;
    for (const ResourceType *implementation : other.implementations) {
        if (implementation == this)
            return true;
    }
    return false;
}

const ResourceType *Model::find(std::string_view name) const {
    const auto at = by_name_.find(without_version(name));
    return at != by_name_.end() ? at->second : nullptr;
}

std::string Model::find_secret_key() const {
    for (const auto &type : types_) {
        std::vector<std::vector<size_t>> groups = type->secondary_keys;
        for (size_t place = 0; place < type->key_count; place++)
            groups.push_back({place});
        for (const auto &group : groups) {
            for (const size_t place : group) {
                if (type->attributes[place].is_secret())
                    return type->name + ": " + type->attributes[place].name;
            }
        }
    }
    return {};
}

/* Takes the derived types that it is asked for, and those of their members. */
class ValueTypeReader {
  public:
    explicit ValueTypeReader(std::vector<std::unique_ptr<ValueType>> &types) : types_(types) {}

    const ValueType *read(const ORUMdTypedefMeta *record) {
        if (record == nullptr)
            return nullptr;
        const auto known = known_.find(record);
        if (known != known_.end())
            return known->second;
        types_.push_back(std::make_unique<ValueType>());
        ValueType *const type = types_.back().get();
        known_.emplace(record, type);
        type->name = text_of(record->name);
        type->code = record->typecode;
        type->labels = NameValueList::share(record->enums);
        type->constraints = ConstraintList::share(record->constraint_list);
        for (const ORUMdComplexEl *at = record->complex_els; at != nullptr; at = at->next) {
            const ValueType *const member = read(at->typedef_meta);
            type->members.push_back({Name::share(at->name),
                                     member != nullptr ? member->code : at->typecode, member,
                                     ConstraintList::share(at->constraint_list)});
        }
        return type;
    }

  private:
    std::vector<std::unique_ptr<ValueType>> &types_;
    std::unordered_map<const ORUMdTypedefMeta *, const ValueType *> known_;
};

/* Reads the records of one type after the other; those that it meets are read behind it. */
class ModelReader {
  public:
    explicit ModelReader(Model &model) : model_(model), value_types_(model.value_types_) {}

    const ResourceType *add(ORUMdMrMeta *record) {
        if (record == nullptr || record->do_mr_meta == nullptr)
            return nullptr;
        const auto known = types_.find(record);
        if (known != types_.end())
            return known->second;
        auto type = std::make_unique<ResourceType>();
        ResourceType *const added = type.get();
        types_.emplace(record, added);
        waiting_.emplace_back(record, added);
        added->name = text_of(oru_do_mr_meta_get_mr_fq_name(record->do_mr_meta));
        model_.by_name_.emplace(without_version(added->name), added);
        model_.types_.push_back(std::move(type));
        return added;
    }

    void read_all() {
        while (!waiting_.empty()) {
            const auto [record, type] = waiting_.back();
            waiting_.pop_back();
            read(*record, *type);
        }
    }

  private:
    void read(const ORUMdMrMeta &record, ResourceType &type) {
        type.access = oru_do_mr_meta_get_max_access(record.do_mr_meta);
        type.is_library = record.is_lib != 0;
        if (record.const_key != nullptr) {
            int32_t status = 0;
            type.constant_key = view(oru_do_value_get_string(record.const_key, &status));
        }
        add_attributes(record.primary_keys, AttributeType::Role::key, type);
        type.key_count = type.attributes.size();
        add_secondary_keys(record.secondary_keys, type);
        add_attributes(record.cd_attrs, AttributeType::Role::config, type);
        add_attributes(record.od_attrs, AttributeType::Role::oper, type);
        add_references(record.refs, type);
        for (size_t i = 0; i < type.attributes.size(); i++)
            type.by_name.emplace(type.attributes[i].name, i);
        for (const ORUMdMrMetaList *at = record.impl_mr_metas; at != nullptr; at = at->next) {
            if (const ResourceType *implementation = add(at->mr))
                type.implementations.push_back(implementation);
        }
    }

    static void add_attribute(ORUDoName *name, ORUDoPropMeta *meta, AttributeType::Role role,
                              const ValueType *value_type, ResourceType &type) {
        AttributeType attribute;
        attribute.name = text_of(name);
        attribute.role = role;
        attribute.type = value_type_of(meta);
        attribute.is_many = is_many(meta);
        attribute.type_name = type_name_of(meta);
        attribute.secrecy = secrecy_of(attribute.type_name);
        attribute.object = Name::share(name);
        attribute.meta = PropertyMeta::share(meta);
        attribute.value_type = value_type;
        read_default(attribute);
        type.attributes.push_back(std::move(attribute));
    }

    void add_attributes(const ORUMdAttrMeta *at, AttributeType::Role role, ResourceType &type) {
        for (; at != nullptr; at = at->next)
            add_attribute(at->name, at->prop_meta, role, value_types_.read(at->typedef_meta), type);
    }

    /* The first key of a group begins it. */
    void add_secondary_keys(const ORUMdAttrMeta *at, ResourceType &type) {
        for (; at != nullptr; at = at->next) {
            if (oru_do_prop_meta_get_first_key_in_group(at->prop_meta) == nullptr)
                type.secondary_keys.emplace_back();
            type.secondary_keys.back().push_back(type.attributes.size());
            add_attribute(at->name, at->prop_meta, AttributeType::Role::config,
                          value_types_.read(at->typedef_meta), type);
        }
    }

    void add_references(const ORUMdRefMeta *at, ResourceType &type) {
        for (; at != nullptr; at = at->next) {
            const int32_t role = oru_do_prop_meta_get_ref_role(at->prop_meta);
            const ResourceType *const target = add(at->target_mr);
            if (role == ORU_REF_PEER) {
                add_attribute(at->name, at->prop_meta, AttributeType::Role::peer, nullptr, type);
                type.attributes.back().target = target;
            }
            if (role != ORU_REF_CHILD || target == nullptr)
                continue;
            type.children.push_back({std::string(text_of(at->name)), is_many(at->prop_meta), target,
                                     PropertyMeta::share(at->prop_meta)});
        }
    }

    Model &model_;
    ValueTypeReader value_types_;
    std::unordered_map<const ORUMdMrMeta *, ResourceType *> types_;
    std::vector<std::pair<const ORUMdMrMeta *, ResourceType *>> waiting_;
};

ORUMdMrMeta *find_record(const char *name) {
    ORUMdMrMeta *record = nullptr;
    certain(true, [&] {
        record = oru_md_get_mr_meta_by_name(name);
        return record != nullptr;
    });
    return record;
}

std::unique_ptr<Model> Model::take(const char *root_type) {
    auto model = std::make_unique<Model>();
    const MetadataLock lock;
    ModelReader reader(*model);
    model->root_ = reader.add(find_record(root_type));
    reader.read_all();
    return model->root_ != nullptr ? std::move(model) : nullptr;
}

}  // namespace embedded
