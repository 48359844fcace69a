// The back end under a script: started on an empty store, with the model of the scripts.
#ifndef ORU_TESTS_BEHAVIOUR_BACK_END_H
#define ORU_TESTS_BEHAVIOUR_BACK_END_H

#include <string>

#include "oruembedded.h"
#include "text.h"

namespace behaviour {

struct StartOptions {
    std::string database; /* empty: in memory */
    std::string model_dir;
    std::string root_type;
    uint32_t keep_commits = 0; /* 0: what the back end keeps by itself */
    uint32_t keep_seconds = 0;
};

class BackEnd {
  public:
    explicit BackEnd(const StartOptions &options);
    ~BackEnd();
    BackEnd(const BackEnd &) = delete;
    BackEnd &operator=(const BackEnd &) = delete;

    // The session of all requests, and one that is shown secrets.
    ORUEmbeddedSession *session(bool shows_secrets) const {
        return shows_secrets ? showing_ : plain_;
    }

    // Everything that there is, a line each resource and property, in an order of its own.
    Lines snapshot() const;

  private:
    static ORUEmbeddedSession *open(const char *secrets);

    std::string root_type_;
    ORUEmbeddedSession *plain_ = nullptr;
    ORUEmbeddedSession *showing_ = nullptr;
};

}  // namespace behaviour

#endif
