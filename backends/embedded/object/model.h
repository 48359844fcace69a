/*
 * The model as the back end needs it: the types of resources that can be reached from the root,
 * with their keys, attributes and references, taken once from the metadata of the process. It keeps
 * nothing of the store of metadata but counted descriptions, so that it can be read without a lock.
 */
#ifndef EMBEDDED_MODEL_H
#define EMBEDDED_MODEL_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "handles.h"

namespace embedded {

struct ResourceType;

/* What is done with a value before it is written. */
enum class Secrecy : uint8_t {
    none,
    hashed, /* types whose name begins with PasswordString: only compared, never read back */
    sealed, /* EncryptedString: read back by those who hold the key */
};

Secrecy secrecy_of(std::string_view type_name);

/* A derived type. The descriptions that the library lends know the members of such types only where
   they were resolved in time; the records of the metadata know them all. */
struct ValueType {
    struct Member {
        Name name;
        int32_t code = 0;                /* of its values; unknown for a type that there is not */
        const ValueType *type = nullptr; /* null for a built-in one */
        ConstraintList constraints;
    };

    std::string name;
    int32_t code = 0;
    NameValueList labels; /* of an enumeration */
    ConstraintList constraints;
    std::vector<Member> members; /* of a sequence or choice, in order */

    const Member *find(std::string_view member) const;
};

/* A key, an attribute, or a reference that is kept as addresses. */
struct AttributeType {
    enum class Role : uint8_t { key, config, oper, peer };

    std::string name;
    Role role = Role::config;
    int32_t type = 0; /* of a value, of the elements where there are many */
    bool is_many = false;
    std::string type_name; /* of a derived type, or empty */
    Secrecy secrecy = Secrecy::none;
    Name object;                           /* the name, to be shared */
    PropertyMeta meta;                     /* with constraints and defaults */
    const ValueType *value_type = nullptr; /* null for a built-in one */
    const ResourceType *target = nullptr;  /* of a peer reference */
    Value default_value; /* what holds without a value, flagged as a default; null for none */
    std::vector<std::string> default_depends_on; /* the attributes that decide on the default */

    bool is_secret() const { return secrecy != Secrecy::none; }
    bool has_default() const { return default_value || !default_depends_on.empty(); }

    /* The default under these properties of the resource, which are asked where it depends on
       some; null for none. */
    Value default_under(ORUDoProperties *props) const;
};

/* What leads to children. */
struct ChildReference {
    std::string name;
    bool is_many = false;
    const ResourceType *target = nullptr;
    PropertyMeta meta;
};

struct ResourceType {
    std::string name;   /* qualified */
    uint8_t access = 0; /* ORU_ACCESS_... */
    bool is_library = false;
    std::string constant_key;              /* of an implementation; empty for none */
    std::vector<AttributeType> attributes; /* the primary keys first, in their order */
    size_t key_count = 0;
    std::vector<std::vector<size_t>> secondary_keys; /* places in `attributes` */
    std::vector<ChildReference> children;
    std::vector<const ResourceType *> implementations;
    std::unordered_map<std::string_view, size_t> by_name;

    const AttributeType *find_attribute(std::string_view attribute) const;
    size_t index_of(const AttributeType &attribute) const {
        return static_cast<size_t>(&attribute - attributes.data());
    }
    bool is_operational() const { return access == 0; }

    /* Of the type or of what implements it; null for none. */
    const ChildReference *find_child(std::string_view reference) const;

    /* Whether children of different types are found under the reference, by what implements the
       type. */
    bool leaves_open(std::string_view reference) const;

    /* Whether resources of this type are of `other`: the same, or one that it implements. */
    bool is_a(const ResourceType &other) const;
};

class Model {
  public:
    /* Takes what is there, from the root type on, under the lock on the metadata. Null when there
       is no such type. */
    static std::unique_ptr<Model> take(const char *root_type);

    const ResourceType &root() const { return *root_; }

    /* By qualified name, or without a version; null for none. */
    const ResourceType *find(std::string_view name) const;

    /* "TYPE: KEY" for a key that is a secret, and so would stand in addresses; empty for none. */
    std::string find_secret_key() const;

  private:
    friend class ModelReader;

    std::vector<std::unique_ptr<ResourceType>> types_;
    std::vector<std::unique_ptr<ValueType>> value_types_;
    std::unordered_map<std::string, const ResourceType *> by_name_;
    const ResourceType *root_ = nullptr;
};

/* The record of a type in the metadata, under the lock on it; null for none. */
ORUMdMrMeta *find_record(const char *name);

}  // namespace embedded

#endif
