/* A store under the cabinet's model. */
#ifndef TESTS_EMBEDDED_CABINET_H
#define TESTS_EMBEDDED_CABINET_H

#include "network.h"

namespace embedded {

class Cabinet : public Network {
  protected:
    ORUEmbeddedOptions options() const override {
        ORUEmbeddedOptions with = Network::options();
        with.model_dir = EMBEDDED_PACKAGES;
        with.root_type = "com.example.cabinet:1.0/Cabinet";
        return with;
    }
};

}  // namespace embedded

#endif
