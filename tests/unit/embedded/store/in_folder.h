/* Tests of stores in files. */
#ifndef TESTS_EMBEDDED_IN_FOLDER_H
#define TESTS_EMBEDDED_IN_FOLDER_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace embedded {

/* A test with a folder of its own. */
class InFolder : public testing::Test {
  protected:
    void SetUp() override {
        char path[] = "/tmp/oru_store_XXXXXX";
        ASSERT_NE(mkdtemp(path), nullptr);
        folder = path;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string folder;
};

}  // namespace embedded

#endif
