/*
 * Result codes: one closed table that the library, back ends and providers share, since codes cross
 * process boundaries and are printed to operators. 0 is success. Codes 1 to 47 are outcomes of
 * operations against the store and its transport, 100 to 134 speak of the data model, 10000 and
 * above are general and system failures. Numbers between them are reserved.
 */
#ifndef ORU_RC_H
#define ORU_RC_H

#include "oru/base.h"

ORU_BEGIN_DECLS

enum {
    ORU_OK = 0,
    ORU_RC_NO_MORE_VALUE = 1,
    ORU_RC_UNSUPPORTED_FEATURE = 2,
    ORU_RC_NO_VALUE = 3,
    ORU_RC_NO_CONFIG_CHANGED = 4,
    ORU_RC_CONFIG_SYNC_STANDBY = 5,
    ORU_RC_CONFIG_SYNC_MEMBER = 6,
    ORU_RC_AUTHENTICATION = 10,
    ORU_RC_AUTHORIZATION = 11,
    ORU_RC_CONFIG_VALIDATION = 12,
    ORU_RC_CONFIG_COMMIT = 13,
    ORU_RC_CONFIG_READ_ONLY = 14,
    ORU_RC_DATABASE = 15,
    ORU_RC_MSG_QUEUE_REMOVED = 16,
    ORU_RC_IPC_INIT = 17,
    ORU_RC_IPC_CLOSE = 18,
    ORU_RC_IPC_SEND = 19,
    ORU_RC_IPC_RECEIVE = 20,
    ORU_RC_IPC_SEND_RECEIVE = 21,
    ORU_RC_IPC_OBJECT = 22,
    ORU_RC_SESSION_CLOSED = 23,
    ORU_RC_OBJECT_UNUSABLE = 24,
    ORU_RC_NO_SUCH_ITERATOR = 25,
    ORU_RC_CLOSE_IFC = 26,
    ORU_RC_ALREADY_SUBSCRIBED = 27,
    ORU_RC_EVENT_SUBSCRIBE = 28,
    ORU_RC_EVENT_UNSUBSCRIBE = 29,
    ORU_RC_CANCELED = 33,
    ORU_RC_CREATE_FAILED = 34,
    ORU_RC_HA_CLIENT_ADD = 40,
    ORU_RC_PROVIDER_READ_ONLY = 41,
    ORU_RC_HA_SCOPE_UPDATE = 42,
    ORU_RC_HA_TRANSITION = 43,
    ORU_RC_UNSUPPORTED_ENCRYPTION = 44,
    ORU_RC_ENCRYPTION = 45,
    ORU_RC_INVALID_PASSWORD = 46,
    ORU_RC_IPC_TIMEOUT = 47,
    ORU_RC_INVALID_URI = 100,
    ORU_RC_VALUE_TYPE = 101,
    ORU_RC_NO_SUCH_RESOURCE = 102,
    ORU_RC_NO_SUCH_COLLECTION = 103,
    ORU_RC_RESOURCE_LOCKED = 104,
    ORU_RC_RESOURCE_EXISTS = 105,
    ORU_RC_PROPERTY = 106,
    ORU_RC_METADATA = 107,
    ORU_RC_NO_SUCH_ATTRIBUTE = 108,
    ORU_RC_NO_SUCH_REFERENCE = 109,
    ORU_RC_WRONG_DATA_TYPE = 110,
    ORU_RC_ACCESS_DENIED = 111,
    ORU_RC_CONSTRAINT = 112,
    ORU_RC_SIZE_CONSTRAINT = 113,
    ORU_RC_VALUES_CONSTRAINT = 114,
    ORU_RC_LENGTH_CONSTRAINT = 115,
    ORU_RC_REGEX_CONSTRAINT = 116,
    ORU_RC_ENUM_CONSTRAINT = 117,
    ORU_RC_TYPE_MISMATCH = 118,
    ORU_RC_TYPE_COMPATIBILITY = 119,
    ORU_RC_CHOICE_CONSTRAINT = 120,
    ORU_RC_SEQUENCE_CONSTRAINT = 130,
    ORU_RC_CONSTRAINT_NOT_APPLICABLE = 131,
    ORU_RC_COLL_SIZE_CONSTRAINT = 132,
    ORU_RC_COLL_PROPERTY_CONSTRAINT = 133,
    ORU_RC_LIB_MR_NOT_IMPLEMENTED = 134,
    ORU_RC_GENERAL = 10000,
    ORU_RC_SYSCALL = 10001,
    ORU_RC_MALLOC = 10002,
    ORU_RC_DEPRECATED_SYSCALL = 10003,
    ORU_RC_FILE_NOT_FOUND = 10004,
};

/*
 * The text of a result code. A number that is not in the table, 0 included, gives "Unknown error".
 * The text is constant and is not freed.
 */
ORU_API const char *oru_do_get_err_msg(int32_t code);

/*
 * Non-zero for codes that speak of what the user asked for: 10, 11, 14, 102, 103, 104, 105, 111,
 * 113, 114 and 115.
 */
ORU_API int32_t oru_do_is_user_err(int32_t code);

/*
 * The code as it counts during an in-service software upgrade: 0 for 102, 103, 106, 108, 109 and
 * 10005, any other code unchanged.
 */
ORU_API int32_t ignored_during_issu(int32_t code);

ORU_END_DECLS

#endif
