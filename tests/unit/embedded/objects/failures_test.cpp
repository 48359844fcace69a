/* What is told of a read that fails. */
#include <oruplatform/tracelet.h>

#include "network.h"

namespace embedded {
namespace {

/* What the back end sends to the tracer at the level of failures. */
class Traces {
  public:
    Traces() {
        tracelet_set_sink(receive, this);
        tracelet_set_threshold(3);
    }
    ~Traces() {
        tracelet_set_threshold(0);
        tracelet_set_sink(nullptr, nullptr);
    }

    std::string text;

  private:
    static void receive(void *context, const char *module, uint32_t level, const char *text,
                        const tracelet_place_t *) {
        static_cast<Traces *>(context)->text +=
            std::string(module) + " " + std::to_string(level) + " " + text + "\n";
    }
};

class EmbeddedFailures : public Network {
  protected:
    std::string held() {
        ORUErrorIfc *const holder = session->data->get_error_ifc(session->data);
        ORUDoError *const error = holder->get_error(holder);
        return error == nullptr ? "nothing"
                                : std::to_string(oru_do_error_get_code(error)) + " " +
                                      oru_do_error_get_msg(error);
    }
};

TEST_F(EmbeddedFailures, OrderWithoutItsAttributeNamesIt) {
    const Traces traces;
    query("/?links", {"id"}, {}, {"cost", "colour desc"});
    EXPECT_EQ(query_code, ORU_RC_NO_SUCH_ATTRIBUTE);
    EXPECT_EQ(held(), "108 there is no attribute to order by: colour");
    EXPECT_EQ(traces.text, "orudbal 3 /?links: there is no attribute to order by: colour\n");
    query("/?links", {"id"}, {}, {"cost"});
    EXPECT_EQ(query_code, ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(held(), "nothing");
}

TEST_F(EmbeddedFailures, UnknownCollectionIsNamed) {
    query("/?wheels", {"id"});
    EXPECT_EQ(query_code, ORU_RC_NO_SUCH_COLLECTION);
    EXPECT_EQ(held(), "103 No such collection: /?wheels");
}

TEST_F(EmbeddedFailures, TypesThatShareADefaultAreOrderedByIt) {
    load();
    // all three are enabled, one of them by default
    set("/logging/targets;name=messages", R"({"enabled":{"%null":null}})");
    ASSERT_EQ(commit().faults, std::vector<std::string>());
    EXPECT_EQ(query("//?:com.example.network.management.lib:1.0/LogTarget", {"name"}, {},
                    {"enabled", "name desc"}),
              (std::vector<std::string>{"collector", "messages", "console"}));
    EXPECT_EQ(query_code, ORU_RC_NO_MORE_VALUE);
}

}  // namespace
}  // namespace embedded
