#include <cstring>

#include "frame/text.h"
#include "oru/lib.h"
#include "oruplatform/halden.h"

char *locationidStr = nullptr;

namespace {

// The operating layer's record: its type, 48 bits that all locations share, a text area.
struct Location {
    uint16_t type;
    uint8_t shared[6];
    uint8_t text[64];
};

constexpr uint16_t kLocalNode = 3;
constexpr int32_t kTextCapacity = 63;

}  // namespace

int32_t oru_location_is_enabled() {
    return 1;
}

void oru_location_update_from_env() {}

const char *oru_get_system_root_uri_str() {
    return "//";
}

const char *oru_get_default_root_uri_str() {
    return "//locations;locationId=global";
}

const char *oru_get_default_provider_scope() {
    return "global";
}

const char *get_locationid_str() {
    if (locationidStr != nullptr)
        return locationidStr;
    Location location{};
    location.type = kLocalNode;
    std::memset(location.shared, 0xff, sizeof location.shared);
    location.text[0] = 0xff;
    halden_resolve_local(0, &location);

    char text[kTextCapacity + 1] = "";
    halden_location_to_str(&location, text, kTextCapacity);
    locationidStr = oru::duplicate(text, oru::Tag::util);
    return locationidStr;
}
