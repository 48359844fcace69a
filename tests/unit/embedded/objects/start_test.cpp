/* What the back end is started with, and what it tells when it refuses. */
#include <oruplatform/tracelet.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "network.h"
#include "store/sqlite.h"
#include "tests/support/child.h"
#include "tests/unit/md/store_support.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedStart : public testing::Test {
  protected:
    ~EmbeddedStart() override {
        if (g_lib_shutdown != nullptr)
            oru_lib_shutdown(0, 0, 0, 0, 0, 0);
        oru_md_free();
    }

    ORUEmbeddedOptions options() {
        ORUEmbeddedOptions with = {};
        with.size = sizeof with;
        with.root_type = "com.example.network:1.0/System";
        with.report = [](void *context, ORUDoError *error) {
            static_cast<Texts *>(context)->push_back(std::to_string(oru_do_error_get_code(error)) +
                                                     " " + oru_do_error_get_msg(error));
        };
        with.report_context = &told;
        return with;
    }
    ORUEmbeddedOptions options_for(const std::string &database) {
        ORUEmbeddedOptions with = options();
        with.model_dir = NETWORK_PACKAGES;
        with.database = database.c_str();
        return with;
    }

    static int32_t start(ORUEmbeddedOptions with) { return oru_lib_init(nullptr, 0, &with); }

    static int32_t open_and_close() {
        const NameValueList params(oru_do_nvlist_new());
        ORUEmbeddedSession *session = nullptr;
        const auto code = static_cast<int32_t>(
            oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&session), 0));
        EXPECT_EQ(session != nullptr, code == ORU_OK);
        oru_cl_session_close(reinterpret_cast<intptr_t>(session), 0, 0, 0, 0, 0);
        return code;
    }

    /* The sample packages whose names end like this, as a bundle. */
    std::string make_bundle(const std::string &name, const std::string &end) {
        for (const auto &entry : std::filesystem::directory_iterator(NETWORK_PACKAGES)) {
            const std::string file = entry.path().filename();
            if (!file.ends_with(end) || (end == ".oru2d" && file.ends_with("-lib.oru2d")))
                continue;
            folder.write(name + "/usr/halden/etc/oru2d/" + file, "");
            std::filesystem::copy_file(entry.path(),
                                       folder.file(name + "/usr/halden/etc/oru2d/" + file),
                                       std::filesystem::copy_options::overwrite_existing);
        }
        return folder.file(name);
    }

    static bool has_type(const char *name) {
        const MetadataLock lock;
        return oru_md_get_mr_meta_by_name(name) != nullptr;
    }

    oru::test::Folder folder;
    Texts told;
};

/* ---- The record ---- */

TEST_F(EmbeddedStart, OlderRecordsEndBeforeTheirFields) {
    ORUEmbeddedOptions with = options();
    with.model_dir = NETWORK_PACKAGES;
    with.bundles = reinterpret_cast<const char *const *>(1);
    with.size = offsetof(ORUEmbeddedOptions, bundles);
    EXPECT_EQ(start(with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
    with.report = [](void *, ORUDoError *) { std::abort(); };
    with.root_type = "com.example.network:1.0/Nobody";
    with.size = offsetof(ORUEmbeddedOptions, report);
    EXPECT_EQ(start(with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_METADATA);
}

TEST_F(EmbeddedStart, NewerRecordsMayBeLonger) {
    struct {
        ORUEmbeddedOptions known;
        char unknown[64];
    } with = {options(), {}};
    with.known.model_dir = NETWORK_PACKAGES;
    with.known.size = sizeof with;
    std::memset(with.unknown, 0x55, sizeof with.unknown);
    EXPECT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
}

/* ---- Secrets ---- */

TEST_F(EmbeddedStart, KeysAreNoSecrets) {
    const auto package = [](const std::string &keys) {
        return R"(<oru2dImpl package="com.example.safe" version="1.0" schemaVersion="1.8">
            <typeDef><simpleType name="PasswordString" base="string"/></typeDef>
            <managedResourceDef><managedResource name="Safe" maxAccess="read-write">)" +
               keys + "</managedResource></managedResourceDef></oru2dImpl>";
    };
    const std::string id = R"(<key><attribute name="id" type="string"/></key>)";
    const std::string pin = R"(<key><attribute name="pin" type="PasswordString"/></key>)";
    for (const std::string &keys : {pin, id + pin}) {
        folder.write("safe.oru2d", package(keys));
        ORUEmbeddedOptions with = options();
        const std::string model = folder.file("");
        with.model_dir = model.c_str();
        with.root_type = "com.example.safe:1.0/Safe";
        told.clear();
        EXPECT_EQ(start(with), ORU_OK);
        EXPECT_EQ(open_and_close(), ORU_RC_METADATA);
        EXPECT_EQ(told,
                  Texts{"107 com.example.safe:1.0/Safe: pin: a secret, which cannot be a key"});
        oru_lib_shutdown(0, 0, 0, 0, 0, 0);
        oru_md_free();
    }
}

/* ---- Bundles ---- */

TEST_F(EmbeddedStart, BundlesHoldTheModel) {
    const std::string lib = make_bundle("lib", "-lib.oru2d");
    const std::string impl = make_bundle("impl", ".oru2d");
    const char *const bundles[] = {lib.c_str(), impl.c_str(), nullptr};
    ORUEmbeddedOptions with = options();
    with.bundles = bundles;
    EXPECT_EQ(start(with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
    EXPECT_EQ(start(with), ORU_OK);  // they are there already
    EXPECT_EQ(open_and_close(), ORU_OK);
    EXPECT_EQ(told, Texts());
}

TEST_F(EmbeddedStart, AnotherListChangesWhatIsLoaded) {
    const std::string lib = make_bundle("lib", "-lib.oru2d");
    const std::string impl = make_bundle("impl", ".oru2d");
    folder.write("more/usr/halden/etc/oru2d/more.oru2d",
                 oru::test::lib_package(oru::test::resources(oru::test::resource("More", "")),
                                        "com.example.more"));
    const std::string more = folder.file("more");
    const char *const all[] = {lib.c_str(), impl.c_str(), more.c_str(), nullptr};
    const char *const without[] = {lib.c_str(), impl.c_str(), nullptr};
    ORUEmbeddedOptions with = options();
    for (const auto *const list : {without, all, without}) {
        with.bundles = list;
        EXPECT_EQ(start(with), ORU_OK);
        EXPECT_EQ(has_type("com.example.more:1.0/More"), list == all);
        EXPECT_EQ(open_and_close(), ORU_OK);
    }
}

TEST_F(EmbeddedStart, BundleWithoutPackagesFails) {
    const std::string lib = make_bundle("lib", "-lib.oru2d");
    const char *const bundles[] = {lib.c_str(), "/nowhere", nullptr};
    ORUEmbeddedOptions with = options();
    with.bundles = bundles;
    EXPECT_EQ(start(with), ORU_RC_FILE_NOT_FOUND);
    EXPECT_EQ(told, Texts{"10004 bundles " + lib +
                          ", /nowhere: " + oru_do_get_err_msg(ORU_RC_FILE_NOT_FOUND)});
    EXPECT_EQ(open_and_close(), ORU_RC_CLOSE_IFC);
}

TEST_F(EmbeddedStart, FolderAndBundlesAreOneTooMany) {
    const char *const bundles[] = {"/nowhere", nullptr};
    ORUEmbeddedOptions with = options();
    with.model_dir = NETWORK_PACKAGES;
    EXPECT_EQ(start(with), ORU_OK);
    with.bundles = bundles;
    EXPECT_EQ(start(with), ORU_RC_GENERAL);
    EXPECT_EQ(told, Texts{"10000 the model is a folder or bundles, not both"});
    EXPECT_TRUE(has_type(with.root_type));
}

TEST_F(EmbeddedStart, EmptyListLeavesTheMetadata) {
    ORUEmbeddedOptions with = options();
    with.model_dir = NETWORK_PACKAGES;
    EXPECT_EQ(start(with), ORU_OK);
    with.model_dir = nullptr;
    const char *const none[] = {nullptr};
    const char *const unnamed[] = {"", nullptr};
    for (const auto *const list : {none, unnamed}) {
        with.bundles = list;
        told.clear();
        EXPECT_EQ(start(with), ORU_RC_GENERAL);
        EXPECT_EQ(told, Texts{"10000 the list of bundles is empty"});
        EXPECT_TRUE(has_type(with.root_type));
    }
}

TEST_F(EmbeddedStart, ProcessMayLoadTheMetadataItself) {
    EXPECT_EQ(start(options()), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_METADATA);
    EXPECT_EQ(told, Texts{"107 the metadata of the process has no resource "
                          "com.example.network:1.0/System"});
    EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
}

/* ---- Reasons ---- */

TEST_F(EmbeddedStart, FileThatIsNoDatabaseIsNamed) {
    const std::string file = folder.file("text");
    folder.write("text", std::string(5000, 'x'));
    EXPECT_EQ(start(options_for(file)), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(told, Texts{"15 " + file + ": file is not a database"});
    EXPECT_EQ(std::filesystem::file_size(file), 5000U);
}

TEST_F(EmbeddedStart, SystemSaysWhyAFileCannotBeOpened) {
    const std::string nowhere = folder.file("no/network.db");
    EXPECT_EQ(start(options_for(nowhere)), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(start(options_for(folder.path())), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(told,
              (Texts{"15 " + nowhere + ": unable to open database file: No such file or directory",
                     "15 " + folder.path() + ": unable to open database file: Is a directory"}));
}

TEST_F(EmbeddedStart, MissingPermissionIsTold) {
    oru::test::expect_in_child([&] {
        const std::string file = folder.file("network.db");
        ASSERT_EQ(start(options_for(file)), ORU_OK);
        std::filesystem::permissions(folder.path(), std::filesystem::perms::none);
        ASSERT_EQ(geteuid() != 0 ? 0 : seteuid(65534), 0);
        EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
        EXPECT_EQ(told, Texts{"15 " + file + ": unable to open database file: Permission denied"});
    });
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
}

TEST_F(EmbeddedStart, DatabasesOfOthersAreTold) {
    const std::string file = folder.file("other.db");
    Connection(file).execute("CREATE TABLE other (x); PRAGMA application_id = 7");
    EXPECT_EQ(start(options_for(file)), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(told, Texts{"15 " + file + ": the file is a database of another program"});
}

TEST_F(EmbeddedStart, DatabasesOfNewerVersionsAreTold) {
    const std::string file = folder.file("network.db");
    EXPECT_EQ(start(options_for(file)), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
    Connection(file).execute("PRAGMA user_version = 99");
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(told, Texts{"15 " + file +
                          ": the database was written by a newer version of this program"});
}

TEST_F(EmbeddedStart, DatabaseOfAnotherLocationIsTold) {
    const std::string file = folder.file("network.db");
    ORUEmbeddedOptions with = options_for(file);
    with.location = "//locations;locationId=7";
    EXPECT_EQ(start(with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_OK);
    EXPECT_EQ(start(options_for(file)), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_DATABASE);
    EXPECT_EQ(told, Texts{"15 " + file +
                          ": the database is that of another location: //locations;locationId=7"});
}

TEST_F(EmbeddedStart, LockedDatabaseIsTold) {
    const std::string file = folder.file("network.db");
    Connection other(file);
    const Transaction transaction(other, Transaction::Aim::write);
    ORUEmbeddedOptions with = options_for(file);
    with.busy_milliseconds = 20;
    EXPECT_EQ(start(with), ORU_OK);
    EXPECT_EQ(open_and_close(), ORU_RC_RESOURCE_LOCKED);
    EXPECT_EQ(told, Texts{"104 " + file + ": database is locked"});
}

TEST_F(EmbeddedStart, OptionsWithoutARootAreTold) {
    ORUEmbeddedOptions with = options();
    with.root_type = nullptr;
    EXPECT_EQ(start(with), ORU_RC_GENERAL);
    EXPECT_EQ(told, Texts{"10000 the options have no root type"});
}

TEST_F(EmbeddedStart, ReasonsAreTracedToo) {
    Texts traced;
    const uint32_t threshold = tracelet_get_threshold();
    tracelet_set_sink(
        [](void *context, const char *module, uint32_t level, const char *text,
           const tracelet_place_t *) {
            if (std::strcmp(module, "orudbal") == 0)
                static_cast<Texts *>(context)->push_back(std::to_string(level) + " " + text);
        },
        &traced);
    tracelet_set_threshold(3);
    ORUEmbeddedOptions with = options();
    with.report = nullptr;
    with.root_type = nullptr;
    EXPECT_EQ(start(with), ORU_RC_GENERAL);
    tracelet_set_threshold(threshold);
    tracelet_set_sink(nullptr, nullptr);
    EXPECT_EQ(traced, Texts{"3 the options have no root type"});
    EXPECT_EQ(told, Texts());
}

}  // namespace
}  // namespace embedded
