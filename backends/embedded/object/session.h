/* What a client session has, and the two tables through which it reads. */
#ifndef EMBEDDED_SESSION_H
#define EMBEDDED_SESSION_H

#include <memory>

#include "addresses.h"
#include "errors.h"
#include "rows.h"
#include "store/store.h"
#include "where.h"

namespace embedded {

/* All that an object of a session needs to read: the model, the store, and what it may see. */
struct Source {
    std::shared_ptr<const Model> model;
    std::shared_ptr<Store> store;
    std::shared_ptr<const SecretReader> secrets;
    Addresses addresses;

    /* What an address names, looking at a revision where the data tells it: by secondary keys, and
       below abstract types. */
    std::optional<Target> resolve(std::string_view address, Revision at) const;
    std::optional<Members> resolve_collection(std::string_view address, Revision at) const;

    /* The resource that a row of the store leads to, which is none itself. */
    std::optional<Place> owner_of(const std::string &index_key, Revision at) const;

    /* The type of the resource at a place; null where there is none that the model knows. */
    const ResourceType *type_at(const Place &place, Revision at) const;

  private:
    Lookup lookup(Revision at) const;
};

/* Single resources. */
class DataInterface {
  public:
    explicit DataInterface(std::shared_ptr<const Source> source);

    ORUDataIfc *table() { return &table_.table; }

    /* What failed last in the session, cursors that did not open among it. */
    ErrorHolder &errors() { return errors_; }

  private:
    using Table = OwnedTable<ORUDataIfc, DataInterface>;

    int32_t get_values(ORUDoUri *uri, ORUDoNlist *names, bool return_defaults, ORUDoVlist *values);
    int32_t get_props(ORUDoUri *uri, bool is_operational, ORUDoProperties *props);
    int32_t no_such_resource(ORUDoUri *uri);

    Table table_;
    std::shared_ptr<const Source> source_;
    Uri context_;
    ErrorHolder errors_;
};

/* Cursors over the members of collections. Its table has no entry for errors: those of cursors that
   do not open go to the holder of the session. */
class CollectionInterface {
  public:
    CollectionInterface(std::shared_ptr<const Source> source, ErrorHolder &errors);

    ORUCollIfc *table() { return &table_.table; }

  private:
    using Table = OwnedTable<ORUCollIfc, CollectionInterface>;

    int32_t open(ORUDoUri *uri, ORUDoNlist *attributes, ORUDoNvlist *where, ORUDoNlist *order,
                 bool return_defaults, bool is_operational, ORUDtlCursor **out_cursor);

    Table table_;
    std::shared_ptr<const Source> source_;
    ErrorHolder &errors_;
};

}  // namespace embedded

#endif
