// The access to resources, as packages write it.
#include <cctype>

#include "md/reader.h"

namespace {

// `[CRUD]`, a letter of another kind in a place leaves its access out.
uint8_t access_of_letters(const char *text) {
    constexpr char kLetters[] = "CRUD";
    uint8_t access = 0;
    for (int place = 0; place < 4; ++place) {
        if (std::toupper(static_cast<unsigned char>(text[1 + place])) == kLetters[place])
            access = static_cast<uint8_t>(access | (ORU_ACCESS_CREATE >> place));
    }
    return access;
}

}  // namespace

uint8_t oru::mr_access_of(const XmlAttribute &attribute) {
    static constexpr struct {
        const char *text;
        uint8_t access;
    } kWords[] = {{"read-only", 4},
                  {"read-write", 15},
                  {"read-create", 13},
                  {"read-update", 6},
                  {"oper-data", 0}};
    for (const auto &word : kWords) {
        if (attribute.is(word.text))
            return word.access;
    }
    const char *text = attribute.text();
    const bool letters =
        text != nullptr && std::strlen(text) == 6 && text[0] == '[' && text[5] == ']';
    return letters ? access_of_letters(text) : 15;
}
