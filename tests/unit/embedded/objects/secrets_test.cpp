#include <crypt.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "network.h"
#include "object/secrets.h"

namespace embedded {
namespace {

using Texts = std::vector<std::string>;

class EmbeddedSecrets : public Network {
  protected:
    void SetUp() override {
        Network::SetUp();
        create(
            "/", "users", "",
            R"({"name":{"%string":"eve"},"uid":{"%uint":7},"password":{"%string":"in the clear"}})");
        create(
            "/", "timeServers", "",
            R"({"address":{"%ip_address":"0A000001"},"secret":{"%string":"sixteen characters"}})");
        EXPECT_EQ(commit().faults, Texts());
        shown = open_session("show");
    }
    void TearDown() override {
        close_session(shown);
        Network::TearDown();
    }

    std::string get_shown(const std::string &address, const std::string &name) {
        std::swap(session, shown);
        const std::string text = get(address, {name});
        std::swap(session, shown);
        return text.substr(name.size() + 1);
    }

    ORUEmbeddedSession *shown = nullptr;
};

TEST_F(EmbeddedSecrets, AreRemovedFromWhatIsRead) {
    EXPECT_EQ(get("/users;name=eve", {"password"}), "password=<removed>");
    EXPECT_EQ(get("/timeServers;address=0A000001", {"secret"}), "secret=<removed>");
    EXPECT_EQ(get_all("/users;name=eve"), "name=eve uid=7 password=<removed>");
    EXPECT_EQ(query("/?users", {"password"}), Texts{"<removed>"});
}

TEST_F(EmbeddedSecrets, PasswordsAreHashedWithSalt) {
    const std::string hash = get_shown("/users;name=eve", "password");
    EXPECT_TRUE(hash.starts_with("$y$"));
    EXPECT_EQ(crypt("in the clear", hash.c_str()), hash);
    EXPECT_NE(crypt("in the dark", hash.c_str()), hash);
    EXPECT_NE(Vault::hash("in the clear"), hash);
}

TEST_F(EmbeddedSecrets, OthersAreReadBackByWhoMay) {
    EXPECT_EQ(get_shown("/timeServers;address=0A000001", "secret"), "sixteen characters");
}

TEST_F(EmbeddedSecrets, OnesInOtherValuesAreKeptAlike) {
    create(
        "/users;name=eve", "sshKeys", "",
        R"({"id":{"%ushort":1},"credential":{"%choice":{"password":{"%string":"in the clear"}}}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get("/users;name=eve/sshKeys;id=1", {"credential"}).find("in the clear"),
              std::string::npos);
    EXPECT_NE(get("/users;name=eve/sshKeys;id=1", {"credential"}).find("<removed>"),
              std::string::npos);
    EXPECT_NE(get_shown("/users;name=eve/sshKeys;id=1", "credential").find("$y$"),
              std::string::npos);
}

TEST_F(EmbeddedSecrets, OtherChangesLeaveThemAsTheyAre) {
    const std::string hash = get_shown("/users;name=eve", "password");
    set("/users;name=eve", R"({"fullName":{"%string":"Eve"}})");
    EXPECT_EQ(commit().faults, Texts());
    EXPECT_EQ(get_shown("/users;name=eve", "password"), hash);
}

TEST_F(EmbeddedSecrets, ConstraintsSpeakOfTheClearTextAndFaultsDoNotTellIt) {
    set("/users;name=eve", R"({"password":{"%string":"short"}})");
    const Answer answer = commit();
    EXPECT_EQ(answer.code, ORU_RC_LENGTH_CONSTRAINT);
    ASSERT_EQ(answer.faults.size(), 1U);
    EXPECT_EQ(answer.faults[0].find("short"), std::string::npos) << answer.faults[0];
    EXPECT_NE(answer.faults[0].find("got <removed>"), std::string::npos) << answer.faults[0];
}

/* ---- The vault ---- */

class VaultFile : public testing::Test {
  protected:
    void SetUp() override {
        char path[] = "/tmp/oru_vault_XXXXXX";
        ASSERT_NE(mkdtemp(path), nullptr);
        folder = path;
        key = folder + "/key";
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string folder;
    std::string key;
};

TEST_F(VaultFile, WhatIsSealedOpensWithTheSameKey) {
    const std::string sealed = Vault(key).seal("text");
    EXPECT_EQ(sealed.find("text"), std::string::npos);
    EXPECT_EQ(Vault(key).open(sealed), "text");
    EXPECT_EQ(Vault(key).open(Vault(key).seal("")), "");
    EXPECT_NE(Vault(key).seal("text"), sealed);
}

TEST_F(VaultFile, KeyIsForItsOwnerAlone) {
    Vault(key).seal("text");
    struct stat state = {};
    ASSERT_EQ(stat(key.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0600U);
    EXPECT_EQ(state.st_size, 32);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

/* A process of the same number may have died on the way, or somebody has put a file there. */
TEST_F(VaultFile, KeyIsNotWrittenIntoWhatIsThere) {
    const std::string beside = key + "." + std::to_string(getpid());
    std::ofstream(beside) << "old";
    std::filesystem::permissions(beside, std::filesystem::perms(0666));
    Vault(key).seal("text");
    struct stat state = {};
    ASSERT_EQ(stat(key.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0600U);
    EXPECT_EQ(state.st_size, 32);
}

TEST_F(VaultFile, OtherKeysAndDamageAreTold) {
    const std::string sealed = Vault(key).seal("text");
    EXPECT_THROW(Vault(key + "2").open(sealed), StoreFault);
    EXPECT_FALSE(std::filesystem::exists(key + "2"));  // it may come back
    Vault(key + "2").seal("text");
    EXPECT_THROW(Vault(key + "2").open(sealed), StoreFault);
    EXPECT_THROW(Vault(key).open("not base 64!"), StoreFault);
    EXPECT_THROW(Vault(key).open("QUJD"), StoreFault);
    std::string changed = sealed;
    changed[10] = changed[10] == 'A' ? 'B' : 'A';
    EXPECT_THROW(Vault(key).open(changed), StoreFault);
}

TEST_F(VaultFile, FilesThatAreNoKeysAreRefused) {
    std::ofstream(key) << "short";
    EXPECT_THROW(Vault(key).seal("text"), StoreFault);
    EXPECT_THROW(Vault(folder + "/no/such/key").seal("text"), StoreFault);
    std::filesystem::create_symlink(key, folder + "/link");
    EXPECT_THROW(Vault(folder + "/link").seal("text"), StoreFault);
}

}  // namespace
}  // namespace embedded
