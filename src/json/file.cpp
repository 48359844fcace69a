// Objects from files, and from the text in which a provider keeps pending attributes.
#include "frame/require.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "oru/error.h"
#include "oru/json.h"
#include "oru/pr.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/util.h"
#include "oru/value.h"

#include "do/error.h"

namespace {

using oru::Level;

int32_t length_of(const char *text) {
    return static_cast<int32_t>(std::strlen(text));
}

template <class Object>
int32_t read_file(const char *path, Object *&out,
                  Object *(*parse)(const char *text, int32_t length, ORUDoError **errp)) {
    char *content = nullptr;
    const int32_t code = oru_read_file(path, &content);
    const oru::Text text(content);
    if (code != ORU_OK || !text) {
        ORU_TRACE(Level::failure, "Failed to read config from %s\n", path);
        return code;
    }
    ORU_TRACE(Level::detail, "Importing json string (%s)\n", text.get());
    ORUDoError *error = nullptr;
    out = parse(text.get(), length_of(text.get()), &error);
    const auto owned = oru::Ref<ORUDoError>::adopt(error);
    if (out != nullptr && !owned)
        return ORU_OK;
    const char *words = owned ? oru_do_error_get_msg(owned.get()) : nullptr;
    ORU_TRACE(Level::failure, "Failed to get config file. %s\n",
              words != nullptr ? words : "unknown error");
    return owned ? oru_do_error_get_code(owned.get()) : ORU_RC_GENERAL;
}

int32_t parse_pending(ORUErrorIfc *holder, const char *text, ORUDoProperties **out) {
    ORU_TRACE(Level::detail, "Pending attributes (json): %s \n", text);
    ORUDoError *error = nullptr;
    *out = oru_do_properties_from_json(text, length_of(text), &error);
    const auto owned = oru::Ref<ORUDoError>::adopt(error);
    if (!owned)
        return ORU_OK;
    const int32_t code = oru_do_error_get_code(owned.get());
    holder->set_error(holder, code, "Failed to get properties from json");
    return code;
}

}  // namespace

int32_t oru_json_file_to_prop_list(const char *filename, ORUDoPropertiesList **plist) {
    ORU_REQUIRE(filename);
    ORU_REQUIRE(plist);
    return read_file(filename, *plist, oru_do_properties_list_from_json);
}

int32_t oru_json_file_to_properties(const char *filename, ORUDoProperties **props) {
    ORU_REQUIRE(filename);
    ORU_REQUIRE(props);
    return read_file(filename, *props, oru_do_properties_from_json);
}

int32_t oru_json_file_to_nlist(const char *filename, ORUDoNlist **nlist) {
    ORU_REQUIRE(filename);
    ORU_REQUIRE(nlist);
    return read_file(filename, *nlist, oru_do_nlist_from_json);
}

int32_t oru_pending_attrs_from_oru_do_value_to_properties(ORUErrorIfc *holder, ORUDoValue *val,
                                                          ORUDoProperties **out) {
    if (val == nullptr || oru_do_value_is_null(val) != 0) {
        ORU_TRACE(Level::detail, "No pending attributes in DB\n");
        *out = oru_do_properties_new();
        return *out != nullptr ? ORU_OK : ORU_RC_MALLOC;
    }
    int32_t code = ORU_OK;
    const char *text = oru_do_value_get_string(val, &code);
    if (code != ORU_OK) {
        holder->set_error(holder, code, "Failed to get pending attributes in json ");
        return code;
    }
    return parse_pending(holder, text != nullptr ? text : "", out);
}
