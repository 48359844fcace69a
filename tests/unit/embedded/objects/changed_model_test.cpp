/* A database under another model than it was written under. */
#include <unistd.h>

#include <filesystem>

#include "cabinet.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedChangedModel : public Cabinet {
  protected:
    EmbeddedChangedModel() { std::filesystem::create_directory(folder_); }
    ~EmbeddedChangedModel() override { std::filesystem::remove_all(folder_); }

    ORUEmbeddedOptions options() const override {
        ORUEmbeddedOptions with = Cabinet::options();
        with.database = file_.c_str();
        if (is_later_) {
            with.model_dir = EMBEDDED_PACKAGES "/later";
            with.root_type = "com.example.cabinet:2.0/Cabinet";
        }
        return with;
    }

    void SetUp() override {
        Cabinet::SetUp();
        create("/", "folders", "", folder("a", R"(,"note":{"%string":"n"})"));
        create("/", "folders", "", folder("b", R"(,"twin":{"%mr_uri":"/folders;name=a"})"));
        create("/folders;name=a", "folders", "", folder("inner", ""));
        create("/", "books", "", R"({"id":{"%uint":1}})");
        create("/books;id=1", "pages", "", R"({"number":{"%uint":1}})");
        ASSERT_EQ(commit().faults, Texts());
        under_model(true);
    }

    void under_model(bool is_later) {
        is_later_ = is_later;
        close_session(session);
        oru_lib_shutdown(0, 0, 0, 0, 0, 0);
        oru_md_free();
        ORUEmbeddedOptions with = options();
        ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
        session = open_session();
    }

    static std::string folder(const std::string &name, const std::string &more) {
        return R"({"name":{"%string":")" + name + R"("},"tag":{"%string":"t-)" + name + R"("})" +
               more + "}";
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("embedded-model-" + std::to_string(getpid()));
    const std::string file_ = folder_ / "cabinet.db";
    bool is_later_ = false;
};

constexpr char kUnknown[] =
    "the resource is of the type com.example.cabinet:1.0/Folder, which the model does not know";

TEST_F(EmbeddedChangedModel, UnknownResourcesAreNotSeen) {
    EXPECT_EQ(get("/folders;name=a", {"note"}), "code 102");
    EXPECT_EQ(get("/folders;tag=t-a", {"note"}), "code 102");
    EXPECT_EQ(get_all("/folders;name=a"), "code 102");
    EXPECT_EQ(query("/?folders", {"_uri"}), Texts());
    EXPECT_EQ(query("/?books", {"_uri"}), Texts{"/books;id=1"});
    under_model(false);
    EXPECT_EQ(get("/folders;tag=t-a", {"note"}), "note=n");
}

TEST_F(EmbeddedChangedModel, AddressesOfUnknownResourcesAreTaken) {
    create("/", "folders", "", folder("a", ""));
    Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_RESOURCE_EXISTS);
    EXPECT_EQ(answer.faults, Texts{std::string("/folders;name=a: ") + kUnknown});
    set("/folders;name=a", R"({"note":{"%string":"x"}})");
    answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_NO_SUCH_RESOURCE);
    EXPECT_EQ(answer.faults, Texts{std::string("/folders;name=a: ") + kUnknown});
    remove("/folders;name=a");
    EXPECT_EQ(commit().code, ORU_RC_NO_SUCH_RESOURCE);
}

TEST_F(EmbeddedChangedModel, SystemDeletesThemAndTheirPlaceIsFree) {
    remove("/folders;name=a");
    EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
    // with the tag of the one that is gone, whose index stayed
    create("/", "folders", "", folder("a", R"(,"note":{"%string":"box"})"));
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/folders;tag=t-a", {"name", "note"}), "name=a note=box");
    under_model(false);
    EXPECT_EQ(get("/folders;name=a", {"note"}), "code 102");
    EXPECT_EQ(get("/folders;name=b", {"tag"}), "tag=t-b");
    EXPECT_EQ(query("/folders;name=a?folders", {"_uri"}), Texts());
}

TEST_F(EmbeddedChangedModel, OneIsReplacedInOneChange) {
    remove("/folders;name=b");
    create("/", "folders", "", folder("b", R"(,"twin":{"%mr_uri":"/folders;name=b"})"));
    EXPECT_EQ(commit(ORU_EMBEDDED_SYSTEM).faults, Texts());
    EXPECT_EQ(get("/folders;tag=t-b", {"twin"}), "twin=/folders;name=b");
}

TEST_F(EmbeddedChangedModel, ReferencesToThemLeadToNothing) {
    create("/", "folders", "", folder("c", R"(,"twin":{"%mr_uri":"/folders;name=a"})"));
    EXPECT_EQ(commit().faults, Texts{"/folders;name=c twin 102 a reference leads to nothing: "
                                     "expected com.example.cabinet:2.0/Box, got /folders;name=a"});
}

TEST_F(EmbeddedChangedModel, NewSecondaryKeysHoldFromTheFirstChangeOn) {
    set("/books;id=1", R"({"title":{"%string":"one"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/books;title=one", {"id"}), "id=1");
    under_model(false);
    // the model before it makes nothing of the key, and leaves it behind
    remove("/books;id=1");
    EXPECT_EQ(commit().faults, Texts());
    under_model(true);
    create("/", "books", "", R"({"id":{"%uint":2},"title":{"%string":"one"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/books;title=one", {"id"}), "id=2");
}

}  // namespace
}  // namespace embedded
