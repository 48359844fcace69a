/* A database in a file: what it keeps, for whom, and what others make of it. */
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "network.h"
#include "store/sqlite.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedFile : public Network {
  protected:
    void SetUp() override {
        char path[] = "/tmp/oru_embedded_XXXXXX";
        ASSERT_NE(mkdtemp(path), nullptr);
        folder = path;
        database = folder + "/network.db";
        Network::SetUp();
    }
    void TearDown() override {
        Network::TearDown();
        std::filesystem::remove_all(folder);
    }

    ORUEmbeddedOptions options() const override {
        ORUEmbeddedOptions with = Network::options();
        with.database = database.c_str();
        with.durability = ORU_EMBEDDED_RELAXED;
        with.keep_commits = 2;
        with.keep_seconds = 1;
        return with;
    }

    /* A cursor over the identifiers of all links. */
    ORUDtlCursor *open_links() {
        const Uri uri(oru_do_uri_new("/?links"));
        const NameList names(oru_do_nlist_new());
        oru_do_nlist_add_string(names.get(), "id");
        ORUDtlCursor *cursor = nullptr;
        session->coll->new_config_cursor(session->coll, uri.get(), names.get(), nullptr, nullptr, 1,
                                         &cursor);
        return cursor;
    }
    void create_link(const std::string &id) {
        create("/", "links", "", R"({"id":{"%string":")" + id + R"("}})");
    }

    /* All bytes that are on disk. */
    std::string bytes() {
        std::string all;
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            all.append(std::istreambuf_iterator<char>(file), {});
        }
        return all;
    }

    std::string folder;
    std::string database;
};

TEST_F(EmbeddedFile, KeepsWhatWasCommitted) {
    create_link("L1");
    const Answer answer = commit();
    EXPECT_EQ(answer.faults, Texts());
    restart();
    EXPECT_EQ(get("/links;id=L1", {"id"}), "id=L1");
    create_link("L2");
    EXPECT_EQ(commit().revision, answer.revision + 1);
}

TEST_F(EmbeddedFile, HasNoSecretInTheClear) {
    create(
        "/", "users", "",
        R"({"name":{"%string":"eve"},"uid":{"%uint":7},"password":{"%string":"correct horse"}})");
    create(
        "/users;name=eve", "sshKeys", "",
        R"({"id":{"%ushort":1},"credential":{"%choice":{"password":{"%string":"battery staple"}}}})");
    create("/", "timeServers", "",
           R"({"address":{"%ip_address":"0A000001"},"secret":{"%string":"sixteen characters"}})");
    EXPECT_EQ(commit().faults, Texts());
    for (const char *const secret : {"correct horse", "battery staple", "sixteen characters"})
        EXPECT_EQ(bytes().find(secret), std::string::npos) << secret;
    EXPECT_NE(bytes().find("eve"), std::string::npos);
}

TEST_F(EmbeddedFile, ProcessesShareIt) {
    create_link("L1");
    commit();
    const pid_t child = fork();
    if (child == 0) {
        session = open_session();
        create_link("L2");
        const bool is_fine = commit().code == ORU_OK && get("/links;id=L1", {"id"}) == "id=L1";
        close_session(session);
        _exit(is_fine ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(query("/?links", {"id"}), (Texts{"L1", "L2"}));
}

TEST_F(EmbeddedFile, WriterThatWaitsTooLongIsTold) {
    Connection other(database);
    const Transaction transaction(other, Transaction::Aim::write);
    ORUEmbeddedOptions with = options();
    with.busy_milliseconds = 50;
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    close_session(session);
    session = open_session();
    create_link("L1");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_RESOURCE_LOCKED);
    EXPECT_EQ(query("/?links", {"id"}), Texts());
}

TEST_F(EmbeddedFile, LongestWaitIsAWait) {
    ORUEmbeddedOptions with = options();
    with.busy_milliseconds = UINT32_MAX;
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    close_session(session);
    session = open_session();
    Connection other(database);
    auto transaction = std::make_unique<Transaction>(other, Transaction::Aim::write);
    std::thread ends([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        transaction.reset();
    });
    create_link("L1");
    EXPECT_EQ(commit().code, ORU_OK);
    ends.join();
}

/* What was lost with a batch is not passed over by the next one. */
TEST_F(EmbeddedFile, CursorEndsWithABatchThatFails) {
    for (const char *const id : {"L1", "L2", "L3"})
        create_link(id);
    commit();
    Connection(database).execute(
        "UPDATE attribute SET type = 77 WHERE row = (SELECT id FROM row WHERE label LIKE '%=L2')");
    ORUDtlCursor *const cursor = open_links();
    ASSERT_NE(cursor, nullptr);
    ORUDoVtable *const rows = oru_do_vtable_new();
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_OK);
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_RC_DATABASE);
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_RC_OBJECT_UNUSABLE);
    cursor->cursor_close(cursor);
    const Buffer text(oru_do_strbuf_new());
    oru_do_vtable_to_json(rows, text.get());
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()), R"({"%vtable":[{"%string":["L1"]}]})");
    oru_do_vtable_deref(rows);
}

TEST_F(EmbeddedFile, CursorReadsTheRevisionAtWhichItWasOpened) {
    for (const char *const id : {"L1", "L2", "L3"})
        create_link(id);
    commit();
    ORUDtlCursor *const cursor = open_links();
    ASSERT_NE(cursor, nullptr);
    ORUDoVtable *const rows = oru_do_vtable_new();
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_OK);
    remove("/links;id=L2");
    create_link("L4");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_OK);
    EXPECT_EQ(cursor->cursor_get_next(cursor, 5, rows), ORU_RC_NO_MORE_VALUE);
    cursor->cursor_close(cursor);
    const Buffer text(oru_do_strbuf_new());
    oru_do_vtable_to_json(rows, text.get());
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()),
                 R"({"%vtable":[{"%string":["L1"]},["L2"],["L3"]]})");
    oru_do_vtable_deref(rows);
}

TEST_F(EmbeddedFile, CursorOfAForgottenRevisionIsUnusable) {
    create_link("L1");
    commit();
    const Uri uri(oru_do_uri_new("/?links"));
    const NameList names(oru_do_nlist_new());
    ORUDtlCursor *cursor = nullptr;
    ASSERT_EQ(session->coll->new_oper_cursor(session->coll, uri.get(), names.get(), nullptr,
                                             nullptr, &cursor),
              ORU_OK);
    sleep(2);
    for (const char *const id : {"L2", "L3", "L4", "L5"}) {
        create_link(id);
        EXPECT_EQ(commit().faults, Texts());
    }
    ORUDoVtable *const rows = oru_do_vtable_new();
    sleep(2);
    create_link("L6");
    commit();
    EXPECT_EQ(cursor->cursor_get_next(cursor, 1, rows), ORU_RC_OBJECT_UNUSABLE);
    ORUErrorIfc *const errors = cursor->cursor_get_error_ifc(cursor);
    EXPECT_EQ(oru_do_error_get_code(errors->get_error(errors)), ORU_RC_OBJECT_UNUSABLE);
    cursor->cursor_close(cursor);
    oru_do_vtable_deref(rows);
}

TEST_F(EmbeddedFile, FilesThatAreNoDatabaseOpenNoSession) {
    close_session(session);
    std::ofstream(database, std::ios::trunc) << std::string(5000, 'x');
    const NameValueList params(oru_do_nvlist_new());
    ORUEmbeddedSession *opened = nullptr;
    EXPECT_EQ(oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0),
              ORU_RC_DATABASE);
    EXPECT_EQ(opened, nullptr);
    std::filesystem::remove(database);
    std::filesystem::remove(database + "-wal");
    std::filesystem::remove(database + "-shm");
    session = open_session();
}

/* ---- What the back end is started with ---- */

TEST_F(EmbeddedFile, OptionsAreChecked) {
    ORUEmbeddedOptions with = options();
    with.size = 8;
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_RC_GENERAL);
    with = options();
    with.root_type = nullptr;
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_RC_GENERAL);
    with = options();
    with.root_type = "com.example.network:1.0/Nobody";
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    const NameValueList params(oru_do_nvlist_new());
    ORUEmbeddedSession *opened = nullptr;
    EXPECT_EQ(oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0),
              ORU_RC_METADATA);
}

TEST_F(EmbeddedFile, NoSessionBeforeTheStartAndAfterTheEnd) {
    close_session(session);
    session = nullptr;
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    const NameValueList params(oru_do_nvlist_new());
    ORUEmbeddedSession *opened = nullptr;
    EXPECT_EQ(oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0),
              ORU_RC_CLOSE_IFC);
}

}  // namespace
}  // namespace embedded
