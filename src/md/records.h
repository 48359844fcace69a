// What the records of the store share: plain blocks of the tagged heap, without a count, in chains
// that their owners walk from the head.
#ifndef ORU_SRC_MD_RECORDS_H
#define ORU_SRC_MD_RECORDS_H

#include <utility>

#include "do/name.h"
#include "frame/tags.h"
#include "oruplatform/poolheap.h"

namespace oru {

// A zeroed record, or null.
template <class Record>
Record *new_record() {
    return static_cast<Record *>(ph_calloc_named(tag_word(Tag::md), 1, sizeof(Record)));
}

template <class Record>
void free_record(Record *record) {
    if (record != nullptr)
        ph_free_named(record);
}

// The link behind the last record of a chain.
template <class Record>
Record *&chain_end(Record *&first) {
    Record **link = &first;
    while (*link != nullptr)
        link = &(*link)->next;
    return *link;
}

template <class Record>
void append_record(Record *&first, Record *record) {
    chain_end(first) = record;
}

// Hands every record to `release`, in order.
template <class Record, class Release>
void delete_records(Record *first, Release &&release) {
    while (first != nullptr)
        release(std::exchange(first, first->next));
}

// The link that leads to the first record that `matches`, or the one at the end.
template <class Record, class Matches>
Record *&find_link(Record *&first, Matches &&matches) {
    Record **link = &first;
    while (*link != nullptr && !matches(**link))
        link = &(*link)->next;
    return *link;
}

template <class Record, class Matches>
Record *find_record(Record *first, Matches &&matches) {
    return find_link(first, std::forward<Matches>(matches));
}

template <class Record>
Record *find_named(Record *first, const NameQuery &query) {
    return find_record(first, [&query](Record &record) { return query.matches(record.name->str); });
}

template <class Record>
Record *find_named(Record *first, const ORUDoName *name) {
    return name != nullptr ? find_named(first, NameQuery(name->str)) : nullptr;
}

template <class Record>
Record *find_named(Record *first, const char *name) {
    return name != nullptr ? find_named(first, NameQuery(name)) : nullptr;
}

// Takes the record of that name out and hands it to `release`. The head afterwards, or null when
// there is no such record.
template <class Record, class Release>
Record *remove_named(Record *first, ORUDoName *name, Release &&release) {
    Record *&link = find_link(
        first, [name](Record &record) { return oru_do_name_equals(record.name, name) != 0; });
    if (link == nullptr)
        return nullptr;
    Record *found = link;
    link = found->next;
    release(found);
    return first;
}

inline const char *text_of(ORUDoName *name) {
    return name != nullptr ? oru_do_name_get_strname(name) : nullptr;
}

}  // namespace oru

#endif
