/* What is inside of arrays and complex values, against the types of the model. */
#ifndef EMBEDDED_MEMBERS_H
#define EMBEDDED_MEMBERS_H

#include <functional>

#include "model.h"

namespace embedded {

/* What is wrong with something inside of a value. */
struct InnerFault {
    int32_t code = 0;
    std::string rule; /* with the path of the member: "the member [1].route.hops ..." */
    std::string expected;
    ORUDoValue *got = nullptr; /* null where the words say it all */
};

/*
 * Checks what the constraints of an attribute do not look at: the types, constraints and labels of
 * members at any depth, in the elements of arrays too, and the labels of elements. The value fits
 * the attribute otherwise.
 */
void check_inside(const AttributeType &attribute, ORUDoValue *value,
                  const std::function<void(const InnerFault &)> &tell);

/* The labels of an enumeration; nothing for null. */
std::string labels_in(ORUDoNvlist *enums);

}  // namespace embedded

#endif
