// The stack of unfinished objects: what the events of a parse do to the one on top.
#ifndef ORU_SRC_JSON_READ_STACK_H
#define ORU_SRC_JSON_READ_STACK_H

#include "json/read.h"

namespace oru::json {

// Finds the type of an element that has none yet. It may stay without one.
void resolve(Reader &reader, Element &element);

// A new element on top. False when memory runs out.
bool push(Reader &reader);

// Completes the element on top and hands what came out to the one below, or to the context.
void pop(Reader &reader);

// Frees the element on top.
void pop_to_parent(Reader &reader);

// ---- The top level ----
// An element there stays when it is complete, and each further closing bracket completes it again,
// so that the context holds what came out last.

void complete_top(Reader &reader, Element &element);

// Makes what the context is to hold of the element, if that was put off. For whoever changes the
// items that the element has.
void settle(ORUDoJsonCtxData &data, Element &element);

// The same at the end of the text.
void settle_top(ORUDoJsonCtxData &data);

// ---- Texts ----

// Texts that yajl had to unescape are in a buffer that it uses again, and are copied. Null when
// memory runs out.
struct Kept {
    const char *text;
    bool copied;
};

Kept keep(Reader &reader, const unsigned char *bytes, size_t size);

// Gives up a text that nobody takes.
void drop(Kept kept);

// ---- Scalars: the element on top takes them, or one that is made just for a scalar ----

void give_null(Reader &reader);
void give_boolean(Reader &reader, bool value);
void give_number(Reader &reader, std::string_view digits);
void give_text(Reader &reader, const unsigned char *bytes, size_t size);

}  // namespace oru::json

#endif
