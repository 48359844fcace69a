// Printing to a stream, one way for all objects that have a text form.
#ifndef ORU_SRC_DO_PRINT_H
#define ORU_SRC_DO_PRINT_H

#include "do/strbuf.h"
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

}  // namespace oru

// An exported `oru_do_print_NAME` of an object whose text form is `oru_do_TEXT`.
#define ORU_PRINT_API(NAME, Object, TEXT)                                     \
    int32_t oru_do_print_##NAME(FILE *stream, int32_t tabs, Object *object) { \
        return ::oru::print_object<oru_do_##TEXT>(stream, tabs, object);      \
    }

#endif
