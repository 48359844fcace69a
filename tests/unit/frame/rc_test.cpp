#include "oru/rc.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    int32_t code;
    const char *text;
    bool user_error;
    bool ignored_during_upgrade;
};

constexpr Row kRows[] = {
    {1, "No more value", false, false},
    {2, "Unsupported feature", false, false},
    {3, "No value", false, false},
    {4, "No configuration changed", false, false},
    {5, "Config sync to standby failed", false, false},
    {6, "Config sync to member failed", false, false},
    {10, "Authentication failed", true, false},
    {11, "Authorization failed", true, false},
    {12, "Configuration validation error", false, false},
    {13, "Configuration change commit error", false, false},
    {14, "Configuration change on read-only configuration", true, false},
    {15, "Database operation error", false, false},
    {16, "Message queue removed", false, false},
    {17, "Initialization of IPC failed", false, false},
    {18, "Close of IPC failed", false, false},
    {19, "Send message over IPC failed", false, false},
    {20, "Receive message over IPC failed", false, false},
    {21, "Send/Receive message over IPC failed", false, false},
    {22, "Retrieval of ipc obj failed", false, false},
    {23, "Session has been closed by a parent object", false, false},
    {24, "API object no longer usable", false, false},
    {25, "No such iterator", false, false},
    {26, "Close ifc error", false, false},
    {27, "Client already subscribed for event", false, false},
    {28, "Event subscription error", false, false},
    {29, "Event unsubscription error", false, false},
    {33, "Operation canceled", false, false},
    {34, "Create failed", false, false},
    {40, "oruCore HA client add failed", false, false},
    {41, "Provider read-only access violation", false, false},
    {42, "oruCore HA server scope update error", false, false},
    {43, "oruCore HA server unsupported transition error", false, false},
    {44, "oruCore unsupported encryption type", false, false},
    {45, "oruCore encryption or decryption error", false, false},
    {46, "oruCore invalid password", false, false},
    {47, "Receive message over ipc timedout", false, false},
    {100, "Invalid URI format", false, false},
    {101, "Value type error", false, false},
    {102, "No such resource", true, true},
    {103, "No such collection", true, true},
    {104, "Resource is locked", true, false},
    {105, "Resource already exists", true, false},
    {106, "Generic property related error", false, true},
    {107, "MetaData Errors", false, false},
    {108, "No such attribute is defined for the resource", false, true},
    {109, "No such reference is defined for the resource", false, true},
    {110, "Wrong data type is used for the property", false, false},
    {111, "Access is denied for the property", true, false},
    {112, "Generic constraint error", false, false},
    {113, "Property array/collection size constraint violation", true, false},
    {114, "Property values constraint violation", true, false},
    {115, "Property string length constraint violation", true, false},
    {116, "Property regex constraint violation", false, false},
    {117, "Property enum values violation", false, false},
    {118, "Property type mismatch violation", false, false},
    {119, "Property type compatibility violation", false, false},
    {120, "Property complex type choice violation", false, false},
    {130, "Property complex type sequence violation", false, false},
    {131, "Constraint not applicable", false, false},
    {132, "Object collection size constraint violation", false, false},
    {133, "Object collection property constraint violation", false, false},
    {134, "Lib MR is not implemented", false, false},
    {10000, "General Exception", false, false},
    {10001, "System call error", false, false},
    {10002, "System call malloc error", false, false},
    {10003, "Deprecated system call error", false, false},
    {10004, "File not found error", false, false},
};

TEST(ResultCodes, EveryCodeOfTheTableHasItsText) {
    EXPECT_EQ(std::size(kRows), 67u);
    for (const Row &row : kRows)
        EXPECT_STREQ(oru_do_get_err_msg(row.code), row.text) << row.code;
}

TEST(ResultCodes, NumbersOutsideTheTableAreUnknownErrors) {
    for (int32_t code : {0, 9, -1, 7, 30, 39, 48, 99, 121, 135, 9999, 10005}) {
        EXPECT_STREQ(oru_do_get_err_msg(code), "Unknown error") << code;
    }
}

TEST(ResultCodes, UserErrorsAreExactlyThoseOfTheTable) {
    for (const Row &row : kRows) {
        EXPECT_EQ(oru_do_is_user_err(row.code) != 0, row.user_error) << row.code;
    }
    EXPECT_EQ(oru_do_is_user_err(0), 0);
    EXPECT_EQ(oru_do_is_user_err(10005), 0);
}

TEST(ResultCodes, FailuresThatCountAsNoneDuringAnUpgradeBecomeZero) {
    for (const Row &row : kRows) {
        EXPECT_EQ(ignored_during_issu(row.code), row.ignored_during_upgrade ? 0 : row.code);
    }
    EXPECT_EQ(ignored_during_issu(10005), 0);
    EXPECT_EQ(ignored_during_issu(0), 0);
    EXPECT_EQ(ignored_during_issu(-7), -7);
}

TEST(ResultCodes, ConstantsCarryTheNumbersOfTheTable) {
    EXPECT_EQ(ORU_OK, 0);
    EXPECT_EQ(ORU_RC_NO_MORE_VALUE, 1);
    EXPECT_EQ(ORU_RC_NO_SUCH_RESOURCE, 102);
    EXPECT_EQ(ORU_RC_LIB_MR_NOT_IMPLEMENTED, 134);
    EXPECT_EQ(ORU_RC_GENERAL, 10000);
    EXPECT_EQ(ORU_RC_FILE_NOT_FOUND, 10004);
}

}  // namespace
