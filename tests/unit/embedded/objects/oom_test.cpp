/* What the back end does when memory runs out, allocation by allocation: it says so, nothing is
   written, nothing leaks, and the session goes on. */
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "cabinet.h"
#include "scarce.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;
using Operations = Handle<ORUDoConfigOps, oru_do_config_ops_ref, oru_do_config_ops_deref>;

constexpr uint64_t kMostAllocations = 100000;

/* Something that is done over and over with less and less missing. */
struct Work {
    /* Calls the back end, and nothing of its own that allocates. */
    std::function<int32_t()> run;
    int32_t success = ORU_OK;
    /* Looks at what was done; `done` as the code told. */
    std::function<void(bool done)> check = [](bool) {};
    /* Takes back what was done. */
    std::function<void()> undo = [] {};
    /* Of what takes long only every so many allocations are tried. */
    uint64_t stride = 1;
};

class EmbeddedMemory : public Cabinet {
  protected:
    void SetUp() override {
        Cabinet::SetUp();
        set("/", R"({"note":{"%string":"n"},"seal":{"%string":"s"},"numbers":{"%long":[1,2]},)"
                 R"("route":{"%sequence":{"first":{"%sequence":{"share":1,"name":"a","via":)"
                 R"({"%choice":{"steps":2}}}},"pin":"1234"}},"opened":{"%uint":4}})");
        for (const char *const name : {"a", "b", "cc"})
            create("/", "folders", "", folder(name));
        create("/folders;name=a", "folders", "", folder("inner"));
        ASSERT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
    }

    static std::string folder(const std::string &name) {
        return R"({"name":{"%string":")" + name + R"("},"tag":{"%string":"tag-)" + name +
               R"("},"note":{"%string":"n"}})";
    }

    /* With the nth allocation missing, for every n until it makes no difference. */
    void sweep(const Work &work, const std::vector<Allocator> &of = {
                                     Allocator::library, Allocator::language, Allocator::engine}) {
        for (const Allocator which : of) {
            for (const bool for_good : {false, true}) {
                sweep(work, which, for_good);
                if (HasFailure())
                    return;
            }
        }
    }

    static std::string printed(const Value &value) {
        const Buffer buffer(oru_do_strbuf_new());
        oru_do_value_to_strbuf(value.get(), 0, buffer.get());
        return text_in(buffer);
    }

    void forget_errors() {
        if (session == nullptr)
            return;
        ORUErrorIfc *const holder = session->data->get_error_ifc(session->data);
        holder->reset_errors(holder);
    }

    Uri root{oru_do_uri_new("//locations;locationId=global")};
    Uri folders{oru_do_uri_new("//locations;locationId=global?folders")};

  private:
    void sweep(const Work &work, Allocator which, bool for_good) {
        // what is kept for later calls is there then
        ASSERT_EQ(work.run(), work.success);
        work.undo();
        forget_errors();
        const int64_t news = live_news();
        for (uint64_t nth = 1; nth < kMostAllocations; nth += work.stride) {
            SCOPED_TRACE(testing::Message() << "allocation " << nth << " of " << which
                                            << (for_good ? " and all behind it" : ""));
            if (!try_once(work, which, nth, for_good)) {
                EXPECT_LE(live_news(), news + 8) << "blocks of operator new leaked";
                return;
            }
            if (HasFailure())
                return;
        }
        FAIL() << "no end";
    }

    /* Whether an allocation failed. */
    bool try_once(const Work &work, Allocator which, uint64_t nth, bool for_good) {
        const uint64_t blocks = poolheap_live_blocks();
        const uint64_t elements = chunk_live_elements();
        bool was_met = false;
        int32_t code = 0;
        {
            const Scarcity scarcity(which, nth, for_good);
            code = work.run();
            was_met = scarcity.was_met();
        }
        EXPECT_TRUE(code == work.success || (was_met && code == ORU_RC_MALLOC)) << code;
        forget_errors();
        work.check(code == work.success);
        if (code == work.success)
            work.undo();
        forget_errors();
        EXPECT_EQ(poolheap_live_blocks(), blocks) << "blocks leaked";
        EXPECT_EQ(chunk_live_elements(), elements) << "pool elements leaked";
        return was_met;
    }
};

/* The same on a database in a file, where the engine has more to do. */
template <typename Base>
class OnAFile : public Base {
  protected:
    OnAFile() {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directory(folder_);
    }
    ~OnAFile() override { std::filesystem::remove_all(folder_); }

    ORUEmbeddedOptions options() const override {
        ORUEmbeddedOptions with = Base::options();
        with.database = file_.c_str();
        with.durability = ORU_EMBEDDED_RELAXED;
        return with;
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("embedded-memory-" + std::to_string(getpid()));
    const std::string file_ = folder_ / "cabinet.db";
};

/* ---- Single resources ---- */

class EmbeddedMemoryOfReads : public EmbeddedMemory {
  protected:
    void sweep_values() {
        const NameList wanted =
            names({"_uri", "_mr", "note", "weight", "seal", "route", "numbers", "nothing"});
        ValueList last;
        Work work;
        work.run = [&] {
            ORUDoVlist *const values = oru_do_vlist_new();
            if (values == nullptr)
                return int32_t{ORU_RC_MALLOC};
            const int32_t code = session->data->get_cfg_prop_values(session->data, root.get(),
                                                                    wanted.get(), 1, values);
            last = ValueList(values);
            return code;
        };
        ASSERT_EQ(work.run(), ORU_OK);
        const Value expected(oru_do_value_new_array(last.get()));
        work.check = [&](bool done) {
            const Value got(oru_do_value_new_array(last.get()));
            EXPECT_TRUE(!done || oru_do_value_equals(got.get(), expected.get()) != 0)
                << printed(got);
            last = {};
        };
        work.undo = [&] { last = {}; };
        sweep(work);
        EXPECT_EQ(get("/", {"weight", "seal"}), "weight=(7) seal=<removed>");
    }

    static NameList names(std::initializer_list<const char *> texts) {
        NameList list(oru_do_nlist_new());
        for (const char *text : texts)
            oru_do_nlist_add_string(list.get(), text);
        return list;
    }
};

TEST_F(EmbeddedMemoryOfReads, Values) {
    sweep_values();
}

using EmbeddedMemoryOfReadsOfAFile = OnAFile<EmbeddedMemoryOfReads>;

TEST_F(EmbeddedMemoryOfReadsOfAFile, Values) {
    sweep_values();
}

TEST_F(EmbeddedMemoryOfReads, OperationalValues) {
    const NameList wanted = names({"opened"});
    Work work;
    work.run = [&] {
        ORUDoVlist *const values = oru_do_vlist_new();
        if (values == nullptr)
            return int32_t{ORU_RC_MALLOC};
        const int32_t code =
            session->data->get_oper_prop_values(session->data, root.get(), wanted.get(), values);
        oru_do_vlist_deref(values);
        return code;
    };
    sweep(work);
}

TEST_F(EmbeddedMemoryOfReads, Properties) {
    for (const bool is_operational : {false, true}) {
        Work work;
        work.run = [&] {
            ORUDoProperties *const props = oru_do_properties_new();
            if (props == nullptr)
                return int32_t{ORU_RC_MALLOC};
            ORUDataIfc *const data = session->data;
            const int32_t code = is_operational
                                     ? data->get_oper_props(data, root.get(), nullptr, props)
                                     : data->get_cfg_props(data, root.get(), nullptr, props);
            oru_do_properties_deref(props);
            return code;
        };
        sweep(work);
    }
}

TEST_F(EmbeddedMemoryOfReads, FailuresAndActions) {
    const Uri nobody(oru_do_uri_new("//locations;locationId=global/folders;name=x"));
    const Uri by_tag(oru_do_uri_new("//locations;locationId=global/folders;tag=x"));
    const NameList wanted = names({"note"});
    const Name action(oru_do_name_new("shut"));
    Work work;
    for (const Uri &uri : {nobody, by_tag}) {
        work.success = ORU_RC_NO_SUCH_RESOURCE;
        work.run = [&] {
            ORUDoVlist *const values = oru_do_vlist_new();
            if (values == nullptr)
                return int32_t{ORU_RC_MALLOC};
            const int32_t code = session->data->get_cfg_prop_values(session->data, uri.get(),
                                                                    wanted.get(), 1, values);
            oru_do_vlist_deref(values);
            return code;
        };
        sweep(work);
    }
    work.success = ORU_RC_UNSUPPORTED_FEATURE;
    work.run = [&] {
        return session->data->invoke_action(session->data, root.get(), action.get(), nullptr,
                                            nullptr);
    };
    sweep(work);
}

TEST_F(EmbeddedMemoryOfReads, HoldersOfErrors) {
    ORUErrorIfc *const holder = session->data->get_error_ifc(session->data);
    const Error error(oru_do_error_new(7, "words"));
    Work work;
    work.run = [&] {
        holder->set_error(holder, 5, "words");
        ORUDoError *const held = holder->get_error(holder);
        const int32_t code = held != nullptr ? ORU_OK : ORU_RC_MALLOC;
        holder->set_do_error(holder, error.get());
        EXPECT_EQ(holder->get_error(holder), error.get());
        holder->add_warning(holder, 5, "words");
        holder->reset_errors(holder);
        EXPECT_EQ(holder->get_error(holder), nullptr);
        EXPECT_NE(session->data->get_context_uri(session->data), nullptr);
        return code;
    };
    sweep(work);
}

/* ---- Collections ---- */

class EmbeddedMemoryOfCursors : public EmbeddedMemoryOfReads {
  protected:
    /* Opens a cursor, reads it to its end, and closes it. */
    void sweep_cursor(const char *address, const char *where_json, const NameList &order,
                      int32_t expected_rows,
                      const std::vector<Allocator> &of = {Allocator::library, Allocator::language,
                                                          Allocator::engine}) {
        const Uri uri(oru_do_uri_new(address));
        const NameList wanted = names({"_uri", "note", "twin"});
        NameValueList where;
        if (where_json != nullptr)
            where = NameValueList(oru_do_nvlist_from_json(
                where_json, static_cast<int32_t>(std::strlen(where_json)), nullptr));
        Work work;
        work.success = ORU_RC_NO_MORE_VALUE;
        work.run = [&] {
            ORUDtlCursor *cursor = nullptr;
            int32_t code = session->coll->new_config_cursor(session->coll, uri.get(), wanted.get(),
                                                            where.get(), order.get(), 1, &cursor);
            EXPECT_EQ(cursor != nullptr, code == ORU_OK);
            int32_t rows = 0;
            while (code == ORU_OK) {
                ORUDoVtable *const table = oru_do_vtable_new();
                code = table != nullptr ? cursor->cursor_get_next(cursor, 2, table)
                                        : int32_t{ORU_RC_MALLOC};
                rows += table != nullptr ? oru_do_vtable_get_row_num(table) : 0;
                oru_do_vtable_deref(table);
            }
            EXPECT_TRUE(code != ORU_RC_NO_MORE_VALUE || rows == expected_rows) << rows;
            if (cursor != nullptr)
                cursor->cursor_close(cursor);
            return code;
        };
        sweep(work, of);
    }
};

TEST_F(EmbeddedMemoryOfCursors, Plain) {
    sweep_cursor("//locations;locationId=global?folders", nullptr, {}, 3);
}

TEST_F(EmbeddedMemoryOfCursors, EverythingOfAType) {
    sweep_cursor("//?:com.example.cabinet:1.0/Folder", nullptr, {}, 4);
}

TEST_F(EmbeddedMemoryOfCursors, WhereOfTheStoreAndOfTheLibrary) {
    sweep_cursor("//locations;locationId=global?folders",
                 R"({"%nvlist":{"note":{"%string":"n"},"name >":{"%string":"b"},)"
                 R"(" OR ":{"%sequence":{"tag":{"%string":"tag-cc"},"tag <":{"%string":"a"}}}}})",
                 {}, 1);
}

// a pattern that the library has no memory for fits nothing, and it does not say why
TEST_F(EmbeddedMemoryOfCursors, WhereWithPatterns) {
    sweep_cursor("//locations;locationId=global?folders",
                 R"({"%nvlist":{"note":{"%string":"n"},"name LIKE":{"%string":"^c"}}})", {}, 1,
                 {Allocator::language, Allocator::engine});
}

TEST_F(EmbeddedMemoryOfCursors, Order) {
    sweep_cursor("//locations;locationId=global?folders", nullptr, names({"note", "name desc"}), 3);
}

TEST_F(EmbeddedMemoryOfCursors, Operational) {
    const NameList wanted = names({"_uri", "note"});
    Work work;
    work.success = ORU_RC_NO_MORE_VALUE;
    work.run = [&] {
        ORUDtlCursor *cursor = nullptr;
        int32_t code = session->coll->new_oper_cursor(session->coll, folders.get(), wanted.get(),
                                                      nullptr, nullptr, &cursor);
        ORUDoVtable *const table = cursor != nullptr ? oru_do_vtable_new() : nullptr;
        if (cursor != nullptr)
            code = table != nullptr ? cursor->cursor_get_next(cursor, 0, table)
                                    : int32_t{ORU_RC_MALLOC};
        oru_do_vtable_deref(table);
        if (cursor != nullptr)
            cursor->cursor_close(cursor);
        return code;
    };
    sweep(work);
}

using EmbeddedMemoryOfCursorsOnAFile = OnAFile<EmbeddedMemoryOfCursors>;

TEST_F(EmbeddedMemoryOfCursorsOnAFile, PlainAndInOrder) {
    sweep_cursor("//locations;locationId=global?folders", nullptr, {}, 3);
    sweep_cursor("//locations;locationId=global?folders", nullptr, names({"note", "name desc"}), 3);
}

/* ---- Commits ---- */

constexpr char kRoot[] = "//locations;locationId=global";
constexpr char kNew[] = "//locations;locationId=global/folders;name=new";

class EmbeddedMemoryOfCommits : public EmbeddedMemory {
  protected:
    void sweep_create() {
        const Operations change = operations();
        add(change, ORU_EMBEDDED_OP_CREATE, kRoot,
            R"({"%properties":{"name":{"%string":"new"},"tag":{"%string":"t"},"note":{"%string":"x"},)"
            R"("twin":{"%mr_uri":"/folders;tag=tag-b"}}})",
            "folders");
        const Operations undo = operations();
        add(undo, ORU_EMBEDDED_OP_DELETE, kNew, nullptr);
        sweep_commit(change, undo, [&] {
            return get("/folders;name=new", {"tag", "note", "twin"}) +
                   get("/folders;tag=t", {"name"});
        });
    }

    static void add(const Operations &to, int32_t code, const char *address, const char *json,
                    const char *reference = nullptr) {
        const Uri uri(oru_do_uri_new(address));
        const Properties props(json == nullptr
                                   ? nullptr
                                   : oru_do_properties_from_json(
                                         json, static_cast<int32_t>(std::strlen(json)), nullptr));
        const Name child(reference != nullptr ? oru_do_name_new(reference) : nullptr);
        oru_do_config_ops_add(to.get(), code, uri.get(), props.get(), child.get(), nullptr,
                              nullptr);
    }

    /* Commits over and over, and undoes it; `probe` tells what it did. */
    void sweep_commit(const Operations &change, const Operations &undo,
                      const std::function<std::string()> &probe, uint32_t flags = 0,
                      uint64_t stride = 1) {
        const std::string before = probe();
        Work work;
        work.run = [&] { return commit_of(change, flags); };
        ASSERT_EQ(work.run(), ORU_OK);
        const std::string after = probe();
        work.undo = [&] {
            ASSERT_EQ(commit_of(undo, ORU_EMBEDDED_SYSTEM), ORU_OK);
            ASSERT_EQ(probe(), before);
        };
        work.undo();
        work.check = [&](bool done) { EXPECT_EQ(probe(), done ? after : before); };
        work.stride = stride;
        sweep(work);
    }

    int32_t commit_of(const Operations &operations, uint32_t flags,
                      const char *request = nullptr) const {
        ORUDoError *error = nullptr;
        int64_t revision = 0;
        const int32_t code =
            session->commit(session, operations.get(), flags, request, &revision, &error);
        EXPECT_TRUE(code == ORU_OK || revision == 0);
        oru_do_error_deref(error);
        return code;
    }

    static Operations operations() { return Operations(oru_do_config_ops_new()); }
};

TEST_F(EmbeddedMemoryOfCommits, Create) {
    sweep_create();
}

using EmbeddedMemoryOfCommitsToAFile = OnAFile<EmbeddedMemoryOfCommits>;

TEST_F(EmbeddedMemoryOfCommitsToAFile, Create) {
    sweep_create();
}

TEST_F(EmbeddedMemoryOfCommits, SetWithSecretsAndComplexValues) {
    const Operations change = operations();
    add(change, ORU_EMBEDDED_OP_SET, kRoot,
        R"({"%properties":{"note":{"%string":"changed"},"seal":{"%string":"other"},)"
        R"("hops":{"%sequence":[{"share":3,"name":"h","via":{"%choice":{"colour":"red"}}}]},)"
        R"("weight":{"%uint":5}}})");
    const Operations undo = operations();
    add(undo, ORU_EMBEDDED_OP_SET, kRoot,
        R"({"%properties":{"note":{"%string":"n"},"seal":{"%string":"s"},"hops":{"%null":null},)"
        R"("weight":{"%null":null}}})");
    sweep_commit(change, undo, [&] { return get("/", {"note", "seal", "hops", "weight"}); });
}

TEST_F(EmbeddedMemoryOfCommits, DeleteWithChildren) {
    const Operations change = operations();
    add(change, ORU_EMBEDDED_OP_DELETE, "//locations;locationId=global/folders;name=a", nullptr);
    const Operations undo = operations();
    const std::string a = R"({"%properties":)" + folder("a") + "}";
    const std::string inner = R"({"%properties":)" + folder("inner") + "}";
    add(undo, ORU_EMBEDDED_OP_CREATE, kRoot, a.c_str(), "folders");
    add(undo, ORU_EMBEDDED_OP_CREATE, "//locations;locationId=global/folders;name=a", inner.c_str(),
        "folders");
    sweep_commit(
        change, undo,
        [&] {
            return get("/folders;name=a", {"note"}) +
                   get("/folders;name=a/folders;name=inner", {"note"});
        },
        0, 5);
}

TEST_F(EmbeddedMemoryOfCommits, DryRun) {
    const Operations change = operations();
    add(change, ORU_EMBEDDED_OP_SET, kRoot, R"({"%properties":{"note":{"%string":"dry"}}})");
    const Operations undo = operations();
    sweep_commit(
        change, undo, [&] { return get("/", {"note"}); }, ORU_EMBEDDED_DRY_RUN);
}

TEST_F(EmbeddedMemoryOfCommits, Refusals) {
    const Operations change = operations();
    add(change, ORU_EMBEDDED_OP_CREATE, kRoot,
        R"({"%properties":{"name":{"%string":"b"},"colour":{"%string":"x"}}})", "folders");
    add(change, ORU_EMBEDDED_OP_SET, kRoot,
        R"({"%properties":{"weight":{"%uint":99},"hops":{"%sequence":[{"share":300}]}}})");
    add(change, ORU_EMBEDDED_OP_DELETE, "//locations;locationId=global/folders;name=zz", nullptr);
    Work work;
    work.success = ORU_RC_RESOURCE_EXISTS;
    work.run = [&] { return commit_of(change, 0); };
    sweep(work);
}

TEST_F(EmbeddedMemoryOfCommits, NamedCommitThatFailedIsDoneLater) {
    const Operations change = operations();
    add(change, ORU_EMBEDDED_OP_CREATE, kRoot,
        R"({"%properties":{"name":{"%string":"new"},"tag":{"%string":"t"}}})", "folders");
    const Operations undo = operations();
    add(undo, ORU_EMBEDDED_OP_DELETE, kNew, nullptr);
    int number = 0;
    std::string request = "request 0";
    Work work;
    work.stride = 5;
    work.run = [&] { return commit_of(change, 0, request.c_str()); };
    work.check = [&](bool) {
        // under the same name, whatever became of the first
        EXPECT_EQ(commit_of(change, 0, request.c_str()), ORU_OK);
        EXPECT_EQ(get("/folders;name=new", {"tag"}), "tag=t");
        request = "request " + std::to_string(++number);
        EXPECT_EQ(commit_of(undo, 0), ORU_OK);
    };
    work.undo = [&] {
        if (get("/folders;name=new", {"tag"}) == "tag=t") {
            EXPECT_EQ(commit_of(undo, 0), ORU_OK);
        }
        request = "request " + std::to_string(++number);
    };
    sweep(work);
}

/* ---- Sessions ---- */

class EmbeddedMemoryOfSessions : public EmbeddedMemory {
  protected:
    void sweep_starts(ORUEmbeddedOptions &with) {
        NameValueList params;
        const auto renew = [&] {
            params = NameValueList(oru_do_nvlist_new());
            for (const char *const end : {"", "-wal", "-shm"}) {
                if (with.database != nullptr)
                    std::filesystem::remove(with.database + std::string(end));
            }
        };
        renew();
        Work work;
        work.stride = with.database != nullptr ? 13 : 3;
        work.check = [&](bool) { renew(); };
        work.undo = renew;
        work.run = [&] {
            int32_t code = oru_lib_init(nullptr, 0, &with);
            ORUEmbeddedSession *opened = nullptr;
            if (code == ORU_OK)
                code = static_cast<int32_t>(
                    oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0));
            EXPECT_EQ(opened != nullptr, code == ORU_OK);
            if (opened != nullptr)
                oru_cl_session_close(reinterpret_cast<intptr_t>(opened), 0, 0, 0, 0, 0);
            oru_lib_shutdown(0, 0, 0, 0, 0, 0);
            return code;
        };
        sweep(work);
    }

    void sweep_sessions() {
        // the library adds to the parameters
        NameValueList params;
        const auto renew = [&] {
            params = NameValueList(oru_do_nvlist_new());
            oru_do_nvlist_add_string(params.get(), "user", "ann");
        };
        renew();
        Work work;
        work.check = [&](bool) { renew(); };
        work.undo = renew;
        work.run = [&] {
            ORUEmbeddedSession *opened = nullptr;
            const auto code = static_cast<int32_t>(
                oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0));
            EXPECT_EQ(opened != nullptr, code == ORU_OK);
            oru_cl_session_close(reinterpret_cast<intptr_t>(opened), 0, 0, 0, 0, 0);
            return code;
        };
        sweep(work);
        EXPECT_EQ(get("/", {"note"}), "note=n");
    }
};

TEST_F(EmbeddedMemoryOfSessions, OnAStoreInMemory) {
    sweep_sessions();
}

using EmbeddedMemoryOfSessionsOnAFile = OnAFile<EmbeddedMemoryOfSessions>;

TEST_F(EmbeddedMemoryOfSessionsOnAFile, OpenAndClose) {
    sweep_sessions();
}

// from the start of the back end on, with the first session, which takes the model
TEST_F(EmbeddedMemoryOfSessions, FirstOfTheBackEnd) {
    close_session(session);
    session = nullptr;
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    ORUEmbeddedOptions with = options();
    with.model_dir = nullptr;
    sweep_starts(with);
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
}

// the database is made, too
TEST_F(EmbeddedMemoryOfSessionsOnAFile, FirstOfTheDatabase) {
    close_session(session);
    session = nullptr;
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    ORUEmbeddedOptions with = options();
    with.model_dir = nullptr;
    const std::string fresh = folder_ / "fresh.db";
    with.database = fresh.c_str();
    sweep_starts(with);
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
}

}  // namespace
}  // namespace embedded
