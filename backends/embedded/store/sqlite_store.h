/*
 * The store on SQLite: one database file with a write-ahead log, or one in memory. Several
 * processes may have the file open; readers never wait, writers wait for each other. All locks are
 * the system's and end with the process that holds them.
 */
#ifndef EMBEDDED_SQLITE_STORE_H
#define EMBEDDED_SQLITE_STORE_H

#include "store.h"

namespace embedded {

struct SqliteOptions {
    std::string path;    /* empty: in memory, gone with the store */
    bool durable = true; /* a commit that was answered survives a loss of power; else only the death
                            of the process */
    int busy_milliseconds = 5000; /* how long a writer waits for others */

    /* A commit is kept, with what it replaced, while it is one of the last `keep_commits` or
       younger than `keep_seconds`. */
    int64_t keep_commits = 1000;
    int64_t keep_seconds = 3600;

    /* Keys are bound by what lies on a page of the database. */
    Limits limits = {.key_bytes = 4096, .value_bytes = size_t{1} << 26, .commit_writes = 1'000'000};
};

/* Opens the database and makes it when it is missing. Unlike other stores this one may be used by
   several threads, one after the other: calls wait for each other. Throws `StoreFault`. */
std::unique_ptr<Store> open_sqlite_store(const SqliteOptions &options);

}  // namespace embedded

#endif
