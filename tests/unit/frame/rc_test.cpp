#include "oru/rc.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    int32_t code;
    int32_t constant;
    const char *text;
    bool user_error;
    bool ignored_during_upgrade;
};

constexpr Row kRows[] = {
    {1, ORU_RC_NO_MORE_VALUE, "No more value", false, false},
    {2, ORU_RC_UNSUPPORTED_FEATURE, "Unsupported feature", false, false},
    {3, ORU_RC_NO_VALUE, "No value", false, false},
    {4, ORU_RC_NO_CONFIG_CHANGED, "No configuration changed", false, false},
    {5, ORU_RC_CONFIG_SYNC_STANDBY, "Config sync to standby failed", false, false},
    {6, ORU_RC_CONFIG_SYNC_MEMBER, "Config sync to member failed", false, false},
    {10, ORU_RC_AUTHENTICATION, "Authentication failed", true, false},
    {11, ORU_RC_AUTHORIZATION, "Authorization failed", true, false},
    {12, ORU_RC_CONFIG_VALIDATION, "Configuration validation error", false, false},
    {13, ORU_RC_CONFIG_COMMIT, "Configuration change commit error", false, false},
    {14, ORU_RC_CONFIG_READ_ONLY, "Configuration change on read-only configuration", true, false},
    {15, ORU_RC_DATABASE, "Database operation error", false, false},
    {16, ORU_RC_MSG_QUEUE_REMOVED, "Message queue removed", false, false},
    {17, ORU_RC_IPC_INIT, "Initialization of IPC failed", false, false},
    {18, ORU_RC_IPC_CLOSE, "Close of IPC failed", false, false},
    {19, ORU_RC_IPC_SEND, "Send message over IPC failed", false, false},
    {20, ORU_RC_IPC_RECEIVE, "Receive message over IPC failed", false, false},
    {21, ORU_RC_IPC_SEND_RECEIVE, "Send/Receive message over IPC failed", false, false},
    {22, ORU_RC_IPC_OBJECT, "Retrieval of ipc obj failed", false, false},
    {23, ORU_RC_SESSION_CLOSED, "Session has been closed by a parent object", false, false},
    {24, ORU_RC_OBJECT_UNUSABLE, "API object no longer usable", false, false},
    {25, ORU_RC_NO_SUCH_ITERATOR, "No such iterator", false, false},
    {26, ORU_RC_CLOSE_IFC, "Close ifc error", false, false},
    {27, ORU_RC_ALREADY_SUBSCRIBED, "Client already subscribed for event", false, false},
    {28, ORU_RC_EVENT_SUBSCRIBE, "Event subscription error", false, false},
    {29, ORU_RC_EVENT_UNSUBSCRIBE, "Event unsubscription error", false, false},
    {33, ORU_RC_CANCELED, "Operation canceled", false, false},
    {34, ORU_RC_CREATE_FAILED, "Create failed", false, false},
    {40, ORU_RC_HA_CLIENT_ADD, "oruCore HA client add failed", false, false},
    {41, ORU_RC_PROVIDER_READ_ONLY, "Provider read-only access violation", false, false},
    {42, ORU_RC_HA_SCOPE_UPDATE, "oruCore HA server scope update error", false, false},
    {43, ORU_RC_HA_TRANSITION, "oruCore HA server unsupported transition error", false, false},
    {44, ORU_RC_UNSUPPORTED_ENCRYPTION, "oruCore unsupported encryption type", false, false},
    {45, ORU_RC_ENCRYPTION, "oruCore encryption or decryption error", false, false},
    {46, ORU_RC_INVALID_PASSWORD, "oruCore invalid password", false, false},
    {47, ORU_RC_IPC_TIMEOUT, "Receive message over ipc timedout", false, false},
    {100, ORU_RC_INVALID_URI, "Invalid URI format", false, false},
    {101, ORU_RC_VALUE_TYPE, "Value type error", false, false},
    {102, ORU_RC_NO_SUCH_RESOURCE, "No such resource", true, true},
    {103, ORU_RC_NO_SUCH_COLLECTION, "No such collection", true, true},
    {104, ORU_RC_RESOURCE_LOCKED, "Resource is locked", true, false},
    {105, ORU_RC_RESOURCE_EXISTS, "Resource already exists", true, false},
    {106, ORU_RC_PROPERTY, "Generic property related error", false, true},
    {107, ORU_RC_METADATA, "MetaData Errors", false, false},
    {108, ORU_RC_NO_SUCH_ATTRIBUTE, "No such attribute is defined for the resource", false, true},
    {109, ORU_RC_NO_SUCH_REFERENCE, "No such reference is defined for the resource", false, true},
    {110, ORU_RC_WRONG_DATA_TYPE, "Wrong data type is used for the property", false, false},
    {111, ORU_RC_ACCESS_DENIED, "Access is denied for the property", true, false},
    {112, ORU_RC_CONSTRAINT, "Generic constraint error", false, false},
    {113, ORU_RC_SIZE_CONSTRAINT, "Property array/collection size constraint violation", true,
     false},
    {114, ORU_RC_VALUES_CONSTRAINT, "Property values constraint violation", true, false},
    {115, ORU_RC_LENGTH_CONSTRAINT, "Property string length constraint violation", true, false},
    {116, ORU_RC_REGEX_CONSTRAINT, "Property regex constraint violation", false, false},
    {117, ORU_RC_ENUM_CONSTRAINT, "Property enum values violation", false, false},
    {118, ORU_RC_TYPE_MISMATCH, "Property type mismatch violation", false, false},
    {119, ORU_RC_TYPE_COMPATIBILITY, "Property type compatibility violation", false, false},
    {120, ORU_RC_CHOICE_CONSTRAINT, "Property complex type choice violation", false, false},
    {130, ORU_RC_SEQUENCE_CONSTRAINT, "Property complex type sequence violation", false, false},
    {131, ORU_RC_CONSTRAINT_NOT_APPLICABLE, "Constraint not applicable", false, false},
    {132, ORU_RC_COLL_SIZE_CONSTRAINT, "Object collection size constraint violation", false, false},
    {133, ORU_RC_COLL_PROPERTY_CONSTRAINT, "Object collection property constraint violation", false,
     false},
    {134, ORU_RC_LIB_MR_NOT_IMPLEMENTED, "Lib MR is not implemented", false, false},
    {10000, ORU_RC_GENERAL, "General Exception", false, false},
    {10001, ORU_RC_SYSCALL, "System call error", false, false},
    {10002, ORU_RC_MALLOC, "System call malloc error", false, false},
    {10003, ORU_RC_DEPRECATED_SYSCALL, "Deprecated system call error", false, false},
    {10004, ORU_RC_FILE_NOT_FOUND, "File not found error", false, false},
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
    for (const Row &row : kRows)
        EXPECT_EQ(row.constant, row.code) << row.text;
}

}  // namespace
