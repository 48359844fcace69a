#include "oru/rc.h"

#include <algorithm>
#include <iterator>

namespace {

struct Text {
    int32_t code;
    const char *text;
};

constexpr Text kTexts[] = {
    {ORU_RC_NO_MORE_VALUE, "No more value"},
    {ORU_RC_UNSUPPORTED_FEATURE, "Unsupported feature"},
    {ORU_RC_NO_VALUE, "No value"},
    {ORU_RC_NO_CONFIG_CHANGED, "No configuration changed"},
    {ORU_RC_CONFIG_SYNC_STANDBY, "Config sync to standby failed"},
    {ORU_RC_CONFIG_SYNC_MEMBER, "Config sync to member failed"},
    {ORU_RC_AUTHENTICATION, "Authentication failed"},
    {ORU_RC_AUTHORIZATION, "Authorization failed"},
    {ORU_RC_CONFIG_VALIDATION, "Configuration validation error"},
    {ORU_RC_CONFIG_COMMIT, "Configuration change commit error"},
    {ORU_RC_CONFIG_READ_ONLY, "Configuration change on read-only configuration"},
    {ORU_RC_DATABASE, "Database operation error"},
    {ORU_RC_MSG_QUEUE_REMOVED, "Message queue removed"},
    {ORU_RC_IPC_INIT, "Initialization of IPC failed"},
    {ORU_RC_IPC_CLOSE, "Close of IPC failed"},
    {ORU_RC_IPC_SEND, "Send message over IPC failed"},
    {ORU_RC_IPC_RECEIVE, "Receive message over IPC failed"},
    {ORU_RC_IPC_SEND_RECEIVE, "Send/Receive message over IPC failed"},
    {ORU_RC_IPC_OBJECT, "Retrieval of ipc obj failed"},
    {ORU_RC_SESSION_CLOSED, "Session has been closed by a parent object"},
    {ORU_RC_OBJECT_UNUSABLE, "API object no longer usable"},
    {ORU_RC_NO_SUCH_ITERATOR, "No such iterator"},
    {ORU_RC_CLOSE_IFC, "Close ifc error"},
    {ORU_RC_ALREADY_SUBSCRIBED, "Client already subscribed for event"},
    {ORU_RC_EVENT_SUBSCRIBE, "Event subscription error"},
    {ORU_RC_EVENT_UNSUBSCRIBE, "Event unsubscription error"},
    {ORU_RC_CANCELED, "Operation canceled"},
    {ORU_RC_CREATE_FAILED, "Create failed"},
    {ORU_RC_HA_CLIENT_ADD, "oruCore HA client add failed"},
    {ORU_RC_PROVIDER_READ_ONLY, "Provider read-only access violation"},
    {ORU_RC_HA_SCOPE_UPDATE, "oruCore HA server scope update error"},
    {ORU_RC_HA_TRANSITION, "oruCore HA server unsupported transition error"},
    {ORU_RC_UNSUPPORTED_ENCRYPTION, "oruCore unsupported encryption type"},
    {ORU_RC_ENCRYPTION, "oruCore encryption or decryption error"},
    {ORU_RC_INVALID_PASSWORD, "oruCore invalid password"},
    {ORU_RC_IPC_TIMEOUT, "Receive message over ipc timedout"},
    {ORU_RC_INVALID_URI, "Invalid URI format"},
    {ORU_RC_VALUE_TYPE, "Value type error"},
    {ORU_RC_NO_SUCH_RESOURCE, "No such resource"},
    {ORU_RC_NO_SUCH_COLLECTION, "No such collection"},
    {ORU_RC_RESOURCE_LOCKED, "Resource is locked"},
    {ORU_RC_RESOURCE_EXISTS, "Resource already exists"},
    {ORU_RC_PROPERTY, "Generic property related error"},
    {ORU_RC_METADATA, "MetaData Errors"},
    {ORU_RC_NO_SUCH_ATTRIBUTE, "No such attribute is defined for the resource"},
    {ORU_RC_NO_SUCH_REFERENCE, "No such reference is defined for the resource"},
    {ORU_RC_WRONG_DATA_TYPE, "Wrong data type is used for the property"},
    {ORU_RC_ACCESS_DENIED, "Access is denied for the property"},
    {ORU_RC_CONSTRAINT, "Generic constraint error"},
    {ORU_RC_SIZE_CONSTRAINT, "Property array/collection size constraint violation"},
    {ORU_RC_VALUES_CONSTRAINT, "Property values constraint violation"},
    {ORU_RC_LENGTH_CONSTRAINT, "Property string length constraint violation"},
    {ORU_RC_REGEX_CONSTRAINT, "Property regex constraint violation"},
    {ORU_RC_ENUM_CONSTRAINT, "Property enum values violation"},
    {ORU_RC_TYPE_MISMATCH, "Property type mismatch violation"},
    {ORU_RC_TYPE_COMPATIBILITY, "Property type compatibility violation"},
    {ORU_RC_CHOICE_CONSTRAINT, "Property complex type choice violation"},
    {ORU_RC_SEQUENCE_CONSTRAINT, "Property complex type sequence violation"},
    {ORU_RC_CONSTRAINT_NOT_APPLICABLE, "Constraint not applicable"},
    {ORU_RC_COLL_SIZE_CONSTRAINT, "Object collection size constraint violation"},
    {ORU_RC_COLL_PROPERTY_CONSTRAINT, "Object collection property constraint violation"},
    {ORU_RC_LIB_MR_NOT_IMPLEMENTED, "Lib MR is not implemented"},
    {ORU_RC_GENERAL, "General Exception"},
    {ORU_RC_SYSCALL, "System call error"},
    {ORU_RC_MALLOC, "System call malloc error"},
    {ORU_RC_DEPRECATED_SYSCALL, "Deprecated system call error"},
    {ORU_RC_FILE_NOT_FOUND, "File not found error"},
};

constexpr int32_t kUserErrors[] = {
    ORU_RC_AUTHENTICATION,    ORU_RC_AUTHORIZATION,      ORU_RC_CONFIG_READ_ONLY,
    ORU_RC_NO_SUCH_RESOURCE,  ORU_RC_NO_SUCH_COLLECTION, ORU_RC_RESOURCE_LOCKED,
    ORU_RC_RESOURCE_EXISTS,   ORU_RC_ACCESS_DENIED,      ORU_RC_SIZE_CONSTRAINT,
    ORU_RC_VALUES_CONSTRAINT, ORU_RC_LENGTH_CONSTRAINT,
};

// The last one has no text of its own.
constexpr int32_t kIgnoredDuringUpgrade[] = {
    ORU_RC_NO_SUCH_RESOURCE,  ORU_RC_NO_SUCH_COLLECTION, ORU_RC_PROPERTY,
    ORU_RC_NO_SUCH_ATTRIBUTE, ORU_RC_NO_SUCH_REFERENCE,  10005,
};

template <size_t n>
bool contains(const int32_t (&codes)[n], int32_t code) {
    return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

}  // namespace

const char *oru_do_get_err_msg(int32_t code) {
    for (const Text &entry : kTexts) {
        if (entry.code == code)
            return entry.text;
    }
    return "Unknown error";
}

int32_t oru_do_is_user_err(int32_t code) {
    return contains(kUserErrors, code);
}

int32_t ignored_during_issu(int32_t code) {
    return contains(kIgnoredDuringUpgrade, code) ? ORU_OK : code;
}
