// The text form of an object, as its `_to_strbuf` writes it.
#ifndef ORU_TESTS_SUPPORT_PRINTED_H
#define ORU_TESTS_SUPPORT_PRINTED_H

#include <gtest/gtest.h>

#include <string>

#include "oru/strbuf.h"

namespace oru::test {

template <auto to_strbuf, class Object>
std::string printed(Object *object, int32_t tabs = 0) {
    ORUDoStrbuf *strbuf = oru_do_strbuf_new();
    EXPECT_EQ(to_strbuf(object, tabs, strbuf), 0);
    std::string text = oru_do_strbuf_to_string(strbuf);
    oru_do_strbuf_deref(strbuf);
    return text;
}

}  // namespace oru::test

#endif
