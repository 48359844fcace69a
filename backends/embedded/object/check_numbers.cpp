#include <algorithm>
#include <set>

#include "check_parts.h"

namespace embedded {

namespace {

/* The greatest number that a size speaks of: beyond it all numbers fit, or none does. */
size_t greatest_in(ORUDoRange *size) {
    int64_t greatest = 0;
    const auto note = [&](ORUDoValue *bound) {
        int32_t status = 0;
        const int64_t number = bound != nullptr ? oru_do_value_to_long(bound, &status) : 0;
        greatest = std::max(greatest, status == 0 ? number : 0);
    };
    for (oru_range_el *at = oru_do_range_get_range_el(size); at != nullptr;
         at = oru_do_range_get_next_range_el(at)) {
        note(oru_do_range_el_get_lower(at));
        note(oru_do_range_el_get_upper(at));
    }
    return static_cast<size_t>(greatest);
}

/* How many children there may be under a reference. */
class Numbers {
  public:
    explicit Numbers(const ChildReference &reference)
        : constraint_(size_constraint_of(reference.meta.get())),
          // without keys there is one place only
          is_only_one_(!reference.is_many && reference.target->key_count != 0) {}

    bool are_limited() const { return constraint_ != nullptr || is_only_one_; }

    /* Beyond it all numbers fit, or none does. */
    size_t greatest() const {
        return std::max(constraint_ != nullptr ? greatest_in(size()) : 0, size_t{is_only_one_});
    }

    bool allow(size_t count) const {
        if (is_only_one_ && count > 1)
            return false;
        return constraint_ == nullptr || certain(true, [&] {
                   return oru_do_range_eval_long(size(), static_cast<int64_t>(count)) != 0;
               });
    }

    std::string words() const {
        return constraint_ != nullptr ? std::string(view(oru_do_constraint_get_str(constraint_)))
                                      : "only one";
    }

  private:
    ORUDoRange *size() const { return oru_do_constraint_get_size(constraint_); }

    ORUDoConstraint *constraint_;
    bool is_only_one_;
};

class NumberChecker {
  public:
    explicit NumberChecker(Edit &edit) : edit_(edit), drafts_(edit.drafts()) {}

    /* The collection that a resource came into, or went out of. */
    void check_beside(const Draft &draft) {
        const Draft &parent = drafts_.at(parent_of(draft.place));
        if (!parent.after.exists())
            return;
        const Place collection = collection_of(draft.place);
        const std::string_view name =
            std::string_view(collection.path).substr(parent.place.path.size() + 1);
        if (const ChildReference *const reference = parent.after.type->find_child(name))
            check(parent, *reference, collection);
    }

    /* The collections of a new resource that may not be empty. */
    void check_least(const Draft &draft) {
        for (const ChildReference &reference : draft.after.type->children) {
            if (!Numbers(reference).allow(0))
                check(draft, reference, below(draft.place, reference.name));
        }
    }

  private:
    void check(const Draft &parent, const ChildReference &reference, const Place &collection) {
        const Numbers numbers(reference);
        if (!numbers.are_limited() || !seen_.insert(collection.key).second)
            return;
        const size_t count = drafts_.count_after(range_of(collection.key), numbers.greatest());
        if (!numbers.allow(count))
            tell(edit_, parent, ORU_RC_COLL_SIZE_CONSTRAINT, reference.name,
                 "the number of children does not fit", numbers.words(), std::to_string(count));
    }

    Edit &edit_;
    Drafts &drafts_;
    std::set<std::string> seen_; /* collections */
};

}  // namespace

void check_numbers(Edit &edit, const std::vector<Draft *> &touched) {
    NumberChecker checker(edit);
    for (const Draft *draft : touched) {
        if (draft->was_there() != draft->is_there())
            checker.check_beside(*draft);
    }
    for (const Draft *draft : touched) {
        if (draft->after.exists() && (!draft->before.exists() || draft->is_made_anew))
            checker.check_least(*draft);
    }
}

}  // namespace embedded
