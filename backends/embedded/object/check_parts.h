/* The checks of a change by their subjects, and the words that they share. */
#ifndef EMBEDDED_CHECK_PARTS_H
#define EMBEDDED_CHECK_PARTS_H

#include "edit.h"

namespace embedded {

/* ---- Words ---- */

/* Adds a fault of the resource of a draft. */
void tell(Edit &edit, const Draft &draft, int32_t code, const std::string &attribute,
          std::string rule, std::string expected, std::string got);

/* "an array of string (Label)". */
std::string type_text(const AttributeType &attribute);

/* What a value of the attribute that was refused with that code should have been. */
std::string expectation(const AttributeType &attribute, int32_t code, ORUDoProperties *props);

/* The size that holds whatever else does; null for none. */
ORUDoConstraint *size_constraint_of(ORUDoPropMeta *meta);

/* ---- References ---- */

/* The addresses in a value: one, or those of an array. */
using UriList = std::vector<ORUDoUri *>;
UriList addresses_in(ORUDoValue *value);

class ReferenceChecker {
  public:
    explicit ReferenceChecker(Edit &edit) : edit_(edit), drafts_(edit.drafts()) {}

    /* A value that was given: that all of it leads to resources of its type, and constraints. */
    void check_value(const Draft &draft, const AttributeType &attribute, const Value &value);

    /* Of those who referred to the resource before, and stay. */
    void check_nobody_refers(const Draft &draft);

    /* A resource that is made anew may be of another type, which others did not refer to. */
    void check_others_may_refer(const Draft &draft);

  private:
    void check_reference(const Draft &draft, const AttributeType &attribute, ORUDoUri *uri);
    void check_references_to(const Draft &draft, const Draft &from, const AttributeType &attribute);
    std::vector<const Draft *> referrers_of(const Draft &draft);
    bool refers(const Draft &from, const Draft &to);

    Edit &edit_;
    Drafts &drafts_;
};

/* ---- Numbers ---- */

/* How many children a reference may have: those that lead to what comes or goes, and those of a
   new resource that may not be without. */
void check_numbers(Edit &edit, const std::vector<Draft *> &touched);

}  // namespace embedded

#endif
