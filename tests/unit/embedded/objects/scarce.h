/* Memory that runs out on purpose: in the library's allocator, in operator new, in the engine of
   the database. */
#ifndef TESTS_EMBEDDED_SCARCE_H
#define TESTS_EMBEDDED_SCARCE_H

#include <cstdint>
#include <ostream>

namespace embedded {

enum class Allocator : uint8_t { library, language, engine };

std::ostream &operator<<(std::ostream &out, Allocator which);

/* While it lives the nth allocation fails, from 1, or with `for_good` that one and all behind it.
 */
class Scarcity {
  public:
    Scarcity(Allocator which, uint64_t nth, bool for_good);
    ~Scarcity();
    Scarcity(const Scarcity &) = delete;
    Scarcity &operator=(const Scarcity &) = delete;

    /* Whether an allocation failed. */
    bool was_met() const;

  private:
    Allocator which_;
};

/* Blocks of operator new that are not deleted. */
int64_t live_news();

}  // namespace embedded

#endif
