/* Sessions and cursors under hard use: many at once, long clauses, options that are none. */
#include <atomic>
#include <thread>

#include "network.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedSessions : public Network {
  protected:
    void create_links(int count) {
        for (int i = 0; i < count; i++)
            create("/", "links", "",
                   R"({"id":{"%string":")" + std::to_string(1000 + i) + R"("},"cost":{"%uint":)" +
                       std::to_string(i + 1) + "}}");
        ASSERT_EQ(commit().code, ORU_OK);
    }

    static int32_t length(ORUDoVtable *table) {
        int32_t rows = 0;
        for (EachRow each(table); each() != nullptr;)
            rows++;
        return rows;
    }
};

constexpr char kLinks[] = "//locations;locationId=global?links";

TEST_F(EmbeddedSessions, NumberLeftToTheCursor) {
    create_links(600);
    const Uri uri(oru_do_uri_new(kLinks));
    const NameList names(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), "id");
    ORUDtlCursor *config = nullptr;
    ORUDtlCursor *oper = nullptr;
    ASSERT_EQ(session->coll->new_config_cursor(session->coll, uri.get(), names.get(), nullptr,
                                               nullptr, 1, &config),
              ORU_OK);
    ASSERT_EQ(session->coll->new_oper_cursor(session->coll, uri.get(), names.get(), nullptr,
                                             nullptr, &oper),
              ORU_OK);
    ORUDoVtable *const all = oru_do_vtable_new();
    EXPECT_EQ(config->cursor_get_next(config, 0, all), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(length(all), 600);
    ORUDoVtable *const pages = oru_do_vtable_new();
    EXPECT_EQ(oper->cursor_get_next(oper, 0, pages), ORU_OK);
    EXPECT_EQ(length(pages), 500);
    EXPECT_EQ(oper->cursor_get_next(oper, 0, pages), ORU_RC_NO_MORE_VALUE);
    EXPECT_EQ(length(pages), 600);
    for (ORUDtlCursor *cursor : {config, oper})
        cursor->cursor_close(cursor);
    oru_do_vtable_deref(all);
    oru_do_vtable_deref(pages);
}

TEST_F(EmbeddedSessions, ClauseThatTheStoreCannotAnswerComesInBatches) {
    create_links(600);
    // comparing texts by more and less is the library's
    const std::string where = R"({"%nvlist":{"id >=":{"%string":"1590"}}})";
    const Texts expected = {"1590", "1591", "1592", "1593", "1594",
                            "1595", "1596", "1597", "1598", "1599"};
    for (const uint32_t count : {0, 1, 3, 10, 1000}) {
        EXPECT_EQ(query(kLinks, {"id"}, where, {}, count), expected) << count;
        EXPECT_EQ(query_code, ORU_RC_NO_MORE_VALUE);
    }
}

TEST_F(EmbeddedSessions, LongAndDeepClausesAreAnswered) {
    create_links(30);
    std::string many;
    for (int i = 0; i < 2000; i++)
        many += std::string(i == 0 ? "" : ",") + R"("cost >=":{"%uint":)" + std::to_string(i % 30) +
                "}";
    EXPECT_EQ(query(kLinks, {"cost"}, R"({"%nvlist":{)" + many + "}}"), (Texts{"29", "30"}));
    std::string deep = R"("cost =":{"%uint":7})";
    for (int i = 0; i < 25; i++)
        deep = R"(" OR ":{"%sequence":{)" + deep + "}}";
    EXPECT_EQ(query(kLinks, {"cost"}, R"({"%nvlist":{)" + deep + "}}"), Texts{"7"});
}

TEST_F(EmbeddedSessions, OrderMayNameAnAttributeAgainAndAgain) {
    create_links(3);
    std::vector<std::string> order(3000, "cost desc");
    EXPECT_EQ(query(kLinks, {"cost"}, {}, order), (Texts{"3", "2", "1"}));
}

TEST_F(EmbeddedSessions, ClauseMayGoBeforeItsCursor) {
    create_links(4);
    const Uri uri(oru_do_uri_new(kLinks));
    const NameList names(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), "id");
    NameValueList where(oru_do_nvlist_new());
    oru_do_nvlist_add_string(where.get(), "id <>", std::string(100, 'x').c_str());
    ORUDtlCursor *cursor = nullptr;
    ASSERT_EQ(session->coll->new_config_cursor(session->coll, uri.get(), names.get(), where.get(),
                                               nullptr, 1, &cursor),
              ORU_OK);
    where = {};
    ORUDoVtable *const rows = oru_do_vtable_new();
    while (cursor->cursor_get_next(cursor, 1, rows) == ORU_OK) {
    }
    EXPECT_EQ(length(rows), 4);
    cursor->cursor_close(cursor);
    oru_do_vtable_deref(rows);
}

TEST_F(EmbeddedSessions, ManyThreadsOnOneStoreInMemory) {
    create_links(40);
    std::atomic<int> faults = 0;
    const auto run = [&](int thread) {
        ORUEmbeddedSession *const own = open_session();
        const Uri link(oru_do_uri_new("//locations;locationId=global/links;id=1001"));
        const Uri links(oru_do_uri_new(kLinks));
        const NameList names(oru_do_nlist_new());
        for (const char *name : {"_uri", "_mr", "id", "cost"})
            oru_do_nlist_add_string(names.get(), name);
        for (int i = 0; i < 20; i++) {
            const ValueList values(oru_do_vlist_new());
            faults += own->data->get_cfg_prop_values(own->data, link.get(), names.get(), 1,
                                                     values.get()) == ORU_OK
                          ? 0
                          : 1;
            ORUDtlCursor *cursor = nullptr;
            ORUDoVtable *const rows = oru_do_vtable_new();
            if (own->coll->new_config_cursor(own->coll, links.get(), names.get(), nullptr, nullptr,
                                             1, &cursor) == ORU_OK) {
                while (cursor->cursor_get_next(cursor, 7, rows) == ORU_OK) {
                }
                cursor->cursor_close(cursor);
            }
            faults += length(rows) == 40 ? 0 : 1;
            oru_do_vtable_deref(rows);
            ORUDoConfigOps *const operations = oru_do_config_ops_new();
            const Properties props(oru_do_properties_new());
            const Value cost(
                oru_do_value_new_unsigned_int(static_cast<uint32_t>(thread * 100 + i)));
            oru_do_properties_set_value(props.get(), "cost", cost.get());
            oru_do_config_ops_add(operations, ORU_EMBEDDED_OP_SET, link.get(), props.get(), nullptr,
                                  nullptr, nullptr);
            const int32_t code = own->commit(own, operations, 0, nullptr, nullptr, nullptr);
            faults += code == ORU_OK || code == ORU_RC_RESOURCE_LOCKED ? 0 : 1;
            oru_do_config_ops_deref(operations);
        }
        close_session(own);
    };
    std::thread others[] = {std::thread(run, 1), std::thread(run, 2), std::thread(run, 3)};
    for (std::thread &other : others)
        other.join();
    EXPECT_EQ(faults, 0);
}

/* Its constraints cannot be asked any more: nothing is written that was not checked. */
TEST_F(EmbeddedSessions, NothingIsWrittenWithoutTheMetadata) {
    oru_md_free();
    create("/", "links", "", R"({"id":{"%string":"a"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_METADATA);
    EXPECT_EQ(answer.faults,
              (Texts{"/links;id=a: the metadata of the process has no type "
                     "com.example.network:1.0/Link any more, or another one of that name"}));
    EXPECT_EQ(query("/?links", {"id"}), Texts());
}

TEST_F(EmbeddedSessions, ActionsHaveNoProvider) {
    const Uri link(oru_do_uri_new(kLinks));
    const Name reset(oru_do_name_new("reset"));
    EXPECT_EQ(
        session->data->invoke_action(session->data, link.get(), reset.get(), nullptr, nullptr),
        ORU_RC_UNSUPPORTED_FEATURE);
    ORUErrorIfc *const holder = session->data->get_error_ifc(session->data);
    EXPECT_STREQ(oru_do_error_get_msg(holder->get_error(holder)),
                 "no provider for the action reset");
    EXPECT_EQ(session->data->invoke_action(session->data, link.get(), nullptr, nullptr, nullptr),
              ORU_RC_UNSUPPORTED_FEATURE);
}

TEST_F(EmbeddedSessions, OptionsNeedTheirSizeAndARoot) {
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    EXPECT_EQ(oru_lib_init(nullptr, 0, nullptr), ORU_RC_GENERAL);
    ORUEmbeddedOptions with = options();
    with.size = offsetof(ORUEmbeddedOptions, root_type);
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_RC_GENERAL);
    with.size = offsetof(ORUEmbeddedOptions, location);
    with.location = reinterpret_cast<const char *>(1);
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
}

class EmbeddedLimits : public EmbeddedSessions {
  protected:
    ORUEmbeddedOptions options() const override {
        ORUEmbeddedOptions with = Network::options();
        with.commit_rows = 2;
        with.value_bytes = 20;
        return with;
    }
};

TEST_F(EmbeddedLimits, OptionsNarrowWhatACommitMayHold) {
    create_links(2);
    for (const char *id : {"a", "b", "c"})
        create("/", "links", "", std::string(R"({"id":{"%string":")") + id + R"("}})");
    EXPECT_EQ(commit().faults, Texts{": too many changes for one commit: expected 2, got 3"});
    set("/", R"({"location":{"%string":"twenty-one characters"}})");
    EXPECT_EQ(commit().faults, Texts{" location 115 a value is too long for the store: expected "
                                     "at most 20 bytes, got 21"});
    set("/", R"({"location":{"%string":"twenty characters..."}})");
    EXPECT_EQ(commit().code, ORU_OK);
}

}  // namespace
}  // namespace embedded
