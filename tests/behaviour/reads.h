// Requests of scripts that read.
#ifndef ORU_TESTS_BEHAVIOUR_READS_H
#define ORU_TESTS_BEHAVIOUR_READS_H

#include <map>
#include <memory>

#include "back_end.h"
#include "cursor.h"
#include "script.h"

namespace behaviour {

class ReadRequests {
  public:
    explicit ReadRequests(const BackEnd &back_end) : back_end_(back_end) {}

    // "read ADDRESS [NAMES]": without names all properties.
    Lines read(const Step &step);
    // "invoke ADDRESS ACTION".
    Lines invoke(const Step &step);
    // "rows COLLECTION [NAMES]": asked for with batches of several sizes.
    Lines rows(const Step &step);
    // "open CURSOR COLLECTION [NAMES]", "next CURSOR COUNT", "close CURSOR".
    Lines open(const Step &step);
    Lines next(const Step &step);
    Lines close(const Step &step);

  private:
    Cursor &cursor(const std::string &name);

    const BackEnd &back_end_;
    std::map<std::string, std::unique_ptr<Cursor>> cursors_;
};

}  // namespace behaviour

#endif
