// Printing to a stream and logging, one way for all objects that have a text form.
#ifndef ORU_SRC_DO_PRINT_H
#define ORU_SRC_DO_PRINT_H

#include "do/strbuf.h"
#include "oru/logger.h"
#include "oru/rc.h"

namespace oru {

// Prints what `ToStrbuf` writes of the object. Without a buffer nothing is printed.
template <auto ToStrbuf, class Object>
int32_t print_object(FILE *stream, int32_t tabs, Object *object) {
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf)
        return ORU_OK;
    ToStrbuf(object, tabs, strbuf.get());
    oru_do_strbuf_print_fp(strbuf.get(), stream);
    return ORU_OK;
}

// Prints `item` and those behind it, with the separator between them.
template <class Item, class Print>
void print_separated(const Item *item, const char *separator, ORUDoStrbuf *strbuf, Print &&print) {
    for (; item != nullptr; item = item->next) {
        print(*item);
        if (item->next != nullptr)
            oru_do_strbuf_add_string(strbuf, separator);
    }
}

// Hands the text of an object to `log`. Without a buffer, or without its storage, there is none.
template <auto ToStrbuf, class Object, class Log>
void log_text(Object *object, Log &&log) {
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf || strbuf->str == nullptr)
        return;
    ToStrbuf(object, 0, strbuf.get());
    log(strbuf->str);
}

// Sends the text to the tracer at one level, whatever level of the logger was asked for.
template <auto ToStrbuf, class Object>
void trace_text(Object *object, uint32_t level) {
    if (oru_logger_get_level() < level)
        return;
    log_text<ToStrbuf>(object, [](const char *text) { ORU_TRACE(Level::detail, "%s\n", text); });
}

}  // namespace oru

// An exported `oru_do_print_NAME` of an object whose text form is `oru_do_TEXT`.
#define ORU_PRINT_API(NAME, Object, TEXT)                                     \
    int32_t oru_do_print_##NAME(FILE *stream, int32_t tabs, Object *object) { \
        return ::oru::print_object<oru_do_##TEXT>(stream, tabs, object);      \
    }

#endif
