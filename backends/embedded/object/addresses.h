/* What addresses mean in the model: texts of resources and of collections as places in the store.
 */
#ifndef EMBEDDED_ADDRESSES_H
#define EMBEDDED_ADDRESSES_H

#include <functional>

#include "keys.h"

namespace embedded {

/* A resource that an address names, whether there is one or not. */
struct Target {
    Place place;
    const ResourceType *type = nullptr; /* by the model: a library type where the data decides */
    const ChildReference *reference = nullptr; /* that leads to it; null for the root */
    std::string parent_key;                    /* empty for the root */
    bool is_whole = true; /* false for a member of a collection without its keys */
};

/* What the data tells where the model leaves it open. What is empty knows nothing. */
struct Lookup {
    /* The resource that a row of the store leads to, by the key of a secondary key. */
    std::function<std::optional<Place>(const std::string &key)> owner_of;
    /* The type of the resource at a place; null where there is none. */
    std::function<const ResourceType *(const Place &place)> type_at;
};

/* What a collection has. */
struct Members {
    std::vector<Range> ranges;
    const ResourceType *type = nullptr; /* what they are, as far as the model tells */
    bool is_chosen = false; /* only those of the type are members, of all that is in the ranges */
};

class Addresses {
  public:
    /* The addresses of resources at one location, "//locations;locationId=global". */
    Addresses(const Model &model, std::string location);

    const std::string &location() const { return location_; }

    /* The address of a place in full. */
    std::string label_of(const Place &place) const { return location_ + place.path; }

    /*
     * The place of an address, with or without the location in front. Nothing for one that the
     * model does not know, that is malformed, or that is at another location. Without a lookup,
     * one with a secondary key is not known.
     */
    std::optional<Target> resolve(std::string_view address, const Lookup &lookup) const;

    /* All forms of collections: "BASE?ref", "BASE?ref:Type", "BASE/ref?:Type", "BASE?:Type" for
       everything below a resource, and "//?:Type" for everything. */
    std::optional<Members> resolve_collection(std::string_view address, const Lookup &lookup) const;

  private:
    std::optional<std::string_view> behind_location(std::string_view address) const;

    const Model &model_;
    std::string location_;
};

}  // namespace embedded

#endif
