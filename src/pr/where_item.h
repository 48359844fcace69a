#ifndef ORU_SRC_PR_WHERE_ITEM_H
#define ORU_SRC_PR_WHERE_ITEM_H

#include "frame/text.h"
#include "oru/types.h"

namespace oru::pr {

// The first word of the name of an item of a where clause: an attribute, or "AND" or "OR".
class WhereWord {
  public:
    explicit WhereWord(const char *item_name);

    // Empty for a name without one, and when memory runs out.
    const char *text() const { return word_ != nullptr ? word_ : ""; }

    // Whether it is an attribute that the handler cannot read. Without memory nothing is said
    // against an item.
    bool is_unknown_to(ORUPrCrudxHandler *handler) const;

  private:
    Text name_;
    const char *word_ = nullptr;
};

}  // namespace oru::pr

#endif
