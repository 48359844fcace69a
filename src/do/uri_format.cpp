// URIs of formatted texts.
#include <cstdarg>
#include <cstdio>

#include "do/uri.h"

namespace {

constexpr size_t kFirstRoom = 64;

// Room for a formatted text, of a class as the texts themselves.
class FormatRoom {
  public:
    FormatRoom(size_t size, size_t room)
        : size_(size), storage_(oru::uri_texts.class_for(room)), text_(take()) {}
    ~FormatRoom() { oru::uri_texts.give(storage_, text_); }
    FormatRoom(const FormatRoom &) = delete;
    FormatRoom &operator=(const FormatRoom &) = delete;

    explicit operator bool() const { return text_ != nullptr; }
    const char *text() const { return text_; }
    // The length that the text has, or would have with room enough; negative when it has none.
    int print(const char *format, std::va_list arguments) {
        return std::vsnprintf(text_, size_, format, arguments);
    }

  private:
    char *take() {
        if (storage_ != oru::StorageClass::heap)
            return oru::uri_texts.take(storage_);
        return static_cast<char *>(ph_malloc_named(oru::tag_word(oru::Tag::strdup), size_));
    }

    size_t size_;
    oru::StorageClass storage_;
    char *text_;
};

// The text of `length` characters, which did not fit at first.
ORUDoUri *format_long_uri(size_t length, const char *format, std::va_list arguments) {
    FormatRoom room(length + 1, oru::roomy(length));
    if (!room) {
        ORU_TRACE(oru::Level::failure, "Failed to alloc buffer");
        return nullptr;
    }
    room.print(format, arguments);
    return oru::make_uri(room.text()).release();
}

ORUDoUri *format_uri(const char *format, std::va_list arguments) {
    size_t length = 0;
    {
        FormatRoom room(kFirstRoom, kFirstRoom);
        if (!room) {
            ORU_TRACE(oru::Level::failure, "cant alloc buffer");
            return nullptr;
        }
        std::va_list first;
        va_copy(first, arguments);
        const int printed = room.print(format, first);
        va_end(first);
        if (printed < 0)
            return nullptr;
        length = static_cast<size_t>(printed);
        if (length < kFirstRoom)
            return oru::make_uri(room.text()).release();
    }
    return format_long_uri(length, format, arguments);
}

}  // namespace

ORUDoUri *oru_do_uri_new_fmt(const char *format, ...) {
    ORU_REQUIRE(format);
    std::va_list arguments;
    va_start(arguments, format);
    ORUDoUri *uri = format_uri(format, arguments);
    va_end(arguments);
    return uri;
}
