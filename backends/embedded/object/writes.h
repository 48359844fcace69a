/* What a change writes to the store. */
#ifndef EMBEDDED_WRITES_H
#define EMBEDDED_WRITES_H

#include "edit.h"
#include "indexes.h"

namespace embedded {

/* What becomes of the secrets in a value before it is written. */
class SecretWriter {
  public:
    virtual ~SecretWriter() = default;
    /* Throws `SecretFault`. */
    virtual Value close(const Value &clear) const = 0;
};

/* A secret that cannot be kept, in words. */
class SecretFault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/* The writes of an edit without faults, which has to stay while they are handed over. */
class EditWrites final : public WriteSource {
  public:
    EditWrites(Edit &edit, const SecretWriter &secrets);

    /* Brings the values of the drafts into the form in which they are kept. What the store does not
       take is added to the faults of the edit. */
    void prepare();

    bool empty() const { return count_ == 0; }
    void hand_to(WriteSink &sink) const override;

  private:
    void prepare_indexes(const Draft &draft);
    void prepare_values(Draft &draft);
    void prepare_value(Draft &draft, const AttributeType &attribute);
    Value closed(const Draft &draft, const AttributeType &attribute, const Value &value);
    Value with_full_addresses(const Value &value);
    Value with_full_address(ORUDoValue *value);
    IndexKeys index_keys(const Draft &draft, const Draft::State &state);
    void hand_over(const Draft &draft, WriteSink &sink) const;
    std::string label(const Draft &draft) const;
    void fault(const Place &place, int32_t code, const std::string &attribute, std::string rule,
               std::string expected, std::string got);

    Edit &edit_;
    Drafts &drafts_;
    const Limits limits_;
    const SecretWriter &secrets_;
    size_t count_ = 0;
    // the rows that lead to resources
    std::vector<std::string> gone_;
    std::vector<std::pair<std::string, const Draft *>> new_;
};

/* The commit of an edit, but for its names: it holds as long as nothing changed that was read. */
Commit preconditions_of(Drafts &drafts);

}  // namespace embedded

#endif
