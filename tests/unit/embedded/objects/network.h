/* The sample network in a store in memory, and short ways to change it and to ask about it. */
#ifndef TESTS_EMBEDDED_NETWORK_H
#define TESTS_EMBEDDED_NETWORK_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "object/handles.h"
#include "oruembedded.h"

namespace embedded {

/* What a commit answered: code and faults, "ADDRESS WORDS" or "ADDRESS attribute CODE WORDS" each,
   addresses without their location. */
struct Answer {
    int32_t code = 0;
    int64_t revision = 0;
    std::vector<std::string> faults;
};

class Network : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /* What the back end is started with; a store in memory unless a test has another wish. */
    virtual ORUEmbeddedOptions options() const;

    /* Ends the sessions of the test and starts the back end again. */
    void restart();

    /* Sessions beside the one that every test has. */
    ORUEmbeddedSession *open_session(const char *secrets = nullptr);
    void close_session(ORUEmbeddedSession *session);

    /* The 107 resources of the sample data. */
    void load();
    /* Those of a properties list. */
    Answer load(const std::string &json);

    /* One operation more of the next commit. Properties are a JSON object of tagged values; the
       type of a created resource may be empty. */
    void create(const std::string &parent, const std::string &reference, const std::string &type,
                const std::string &props);
    void set(const std::string &address, const std::string &props);
    void remove(const std::string &address);
    void add_operation(int32_t code, const std::string &address);
    Answer commit(uint32_t flags = 0, const char *request = nullptr);

    /* The values of a resource as text, "name=value name=value", absent ones as "-", defaults in
       parentheses; "code N" for a failure. */
    std::string get(const std::string &address, const std::vector<std::string> &names,
                    bool return_defaults = true);
    std::string get_all(const std::string &address, bool is_operational = false);

    /* The rows of a collection, the given number a call: "value value" each. */
    std::vector<std::string> query(const std::string &collection,
                                   const std::vector<std::string> &names,
                                   const std::string &where = {},
                                   const std::vector<std::string> &order = {}, uint32_t count = 0);

    ORUEmbeddedSession *session = nullptr;
    int32_t query_code = 0;

  private:
    void add(int32_t code, const std::string &address, const Properties &props,
             const std::string &reference, const std::string &type);

    Operations operations_;
};

}  // namespace embedded

#endif
