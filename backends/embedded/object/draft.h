/* Resources as a set of operations leaves them, beside what the store has. */
#ifndef EMBEDDED_DRAFT_H
#define EMBEDDED_DRAFT_H

#include <map>
#include <memory>

#include "session.h"

namespace embedded {

/* One resource before and after. Without one there is no type and there are no properties. */
struct Draft {
    struct State {
        const ResourceType *type = nullptr;
        Properties props;

        bool exists() const { return type != nullptr; }
        Value value(const AttributeType &attribute) const;
    };

    /* Whether something stands at the address, a resource whose type the model does not know
       included. */
    bool was_there() const { return before.exists() || !unknown_kind.empty(); }
    bool is_there() const { return after.exists() || (!unknown_kind.empty() && !is_dropped); }

    /* The attributes, of the type behind the change, that operations gave a value. */
    bool is_given(const AttributeType &attribute) const;
    void note_given(const AttributeType &attribute);

    Place place;
    State before;
    State after;
    std::string unknown_kind;  /* the type of what is there, when the model does not know it */
    std::vector<bool> given;   /* by their places in the type; empty for none */
    bool is_touched = false;   /* by an operation */
    bool is_made_anew = false; /* deleted, and created again */
    bool is_dropped = false;   /* what is there of an unknown type goes */
};

/* Sets a property, or takes it away for a null value. */
void set_property(Properties &props, const AttributeType &attribute, const Value &value);

/* The drafts of a change, read from one revision as they are needed. What was read is remembered:
   the change holds as long as none of it changes. */
class Drafts {
  public:
    Drafts(const Source &source, Revision at) : source_(source), at_(at) {}

    /* The draft of a place, which is read at the first time. */
    Draft &at(const Place &place);

    /* Reads all that is in a range into drafts. */
    void read(const Range &range);

    /* What an address names after the operations so far: also by secondary keys. */
    std::optional<Target> resolve(std::string_view address);

    /* To be told after each change to a draft by an operation: its secondary keys may be others. */
    void note_change(Draft &draft);

    /* The resource that has a secondary key in the store, before the change. */
    std::optional<Place> stored_owner_of(const std::string &key);

    /* The first keys of a range in the store. */
    std::vector<std::string> keys(const Range &range, size_t most = SIZE_MAX / 2);

    /* The drafts below a place, itself included, as far as they were read. */
    std::vector<Draft *> below(const Place &place);

    /* How many resources there are in a range after the change; of more than `most` some that are
       more. */
    size_t count_after(const Range &range, size_t most);

    /* In the order of their keys, which stand in their places. */
    using ByKey = std::map<std::string_view, std::unique_ptr<Draft>>;

    const ByKey &all() const { return drafts_; }
    const Source &source() const { return source_; }
    Revision revision() const { return at_; }

    /* All that was read, beside the places of the drafts. */
    std::vector<Range> &ranges_read() { return ranges_; }
    std::vector<std::string> &keys_read() { return keys_; }

  private:
    friend class DraftReader;

    using Keys = std::vector<std::string>;

    Draft &add(Place place);
    std::optional<Place> owner_of(const std::string &key);
    const ResourceType *type_at(const Place &place);
    static Keys secondary_keys_of(const Draft &draft, const Draft::State &state);
    void catch_up();

    const Source &source_;
    Revision at_;
    ByKey drafts_;
    std::vector<Range> ranges_;
    Keys keys_; /* of rows that lead to resources */
    // who has which secondary key beside what the store says, found out when somebody asks
    std::vector<Draft *> changed_; /* since then */
    std::map<const Draft *, Keys> keys_of_changed_;
    std::map<std::string, std::optional<Place>> owners_;
};

}  // namespace embedded

#endif
