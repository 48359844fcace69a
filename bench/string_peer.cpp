#include "bench/string_peer.h"

#include <charconv>
#include <string>

struct string_peer {
    std::string text;

    int32_t length() const { return static_cast<int32_t>(text.size()); }
};

string_peer *string_peer_new() {
    return new string_peer;
}

void string_peer_clear(string_peer *self) {
    self->text.clear();
}

int32_t string_peer_append_str(string_peer *self, const char *text) {
    self->text.append(text);
    return self->length();
}

int32_t string_peer_append_char(string_peer *self, int32_t c) {
    self->text.push_back(static_cast<char>(c));
    return self->length();
}

int32_t string_peer_append_long(string_peer *self, int64_t n) {
    char digits[20];
    const auto result = std::to_chars(digits, digits + sizeof digits, n);
    self->text.append(digits, result.ptr);
    return self->length();
}
