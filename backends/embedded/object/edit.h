/*
 * A set of configuration operations on its way into the store: carried out on drafts, checked as a
 * whole, written as one commit.
 */
#ifndef EMBEDDED_EDIT_H
#define EMBEDDED_EDIT_H

#include "draft.h"
#include "faults.h"

namespace embedded {

/* Who asks for the change. */
enum class Authority : uint8_t {
    client, /* what the model allows clients to create, change and delete, and configuration only */
    system, /* everything, operational data too, as providers and loads do */
};

class Edit {
  public:
    Edit(const Source &source, Revision at, Authority authority)
        : drafts_(source, at), authority_(authority) {}

    /* Carries out one operation. What is wrong with it is added to the faults. */
    void apply(ORUDoConfigOp *operation);

    Drafts &drafts() { return drafts_; }
    Faults &faults() { return faults_; }
    const Faults &faults() const { return faults_; }

  private:
    void create(ORUDoConfigOp *operation);
    void set(ORUDoConfigOp *operation);
    void erase(ORUDoConfigOp *operation);

    Draft *find(ORUDoConfigOp *operation, std::string &address, bool takes_unknown = false);
    const ResourceType *choose_type(ORUDoConfigOp *operation, const ChildReference &reference,
                                    const std::string &address);
    bool add_keys(ORUDoProperties *props, const ResourceType &type, Place &place);
    void give(Draft &draft, ORUDoProperties *props);
    void give(Draft &draft, const AttributeType &attribute, ORUDoValue *value);
    bool is_denied(const ResourceType &type, uint8_t access, const std::string &address);
    void fault(int32_t code, const std::string &address, std::string rule,
               std::string attribute = {}, std::string expected = {}, std::string got = {});
    std::string label(const Place &place) const {
        return drafts_.source().addresses.label_of(place);
    }

    Drafts drafts_;
    Authority authority_;
    Faults faults_;
};

/* A value for people: its text, shortened; nothing of a secret. */
std::string shown(const AttributeType &attribute, ORUDoValue *value);

}  // namespace embedded

#endif
