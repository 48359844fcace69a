/* Values in the types of the model, down to the members of complex ones. */
#ifndef EMBEDDED_TYPED_H
#define EMBEDDED_TYPED_H

#include <functional>

#include "model.h"

namespace embedded {

/* A value in the type of its attribute, with the names of derived types, where the library lets the
   one pass for the other; as it is otherwise. */
Value in_type_of(const AttributeType &attribute, ORUDoValue *value);

/* The value with every secret in it replaced: those whose derived type has the name of one. The
   value itself when there is none. */
using ReplaceSecret = std::function<Value(ORUDoValue *secret, Secrecy secrecy)>;
Value replace_secrets(const Value &value, const ReplaceSecret &replace);

}  // namespace embedded

#endif
