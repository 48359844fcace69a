// How the records of a parse lie in memory, for who looks at one: the context in the header, and
// the elements of the stack with their items, as far as their fields are fixed.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "tests/unit/json/support.h"

namespace {

using oru::test::Context;
using oru::test::parsed;

static_assert(offsetof(ORUDoJsonCtxData, expected) == 0);
static_assert(offsetof(ORUDoJsonCtxData, top) == 8);
static_assert(offsetof(ORUDoJsonCtxData, completed_type) == 16);
static_assert(offsetof(ORUDoJsonCtxData, completed_obj) == 24);
static_assert(offsetof(ORUDoJsonCtxData, err) == 32);
static_assert(offsetof(ORUDoJsonCtxData, resolve_fn) == 40);
static_assert(offsetof(ORUDoJsonCtxData, set_fn) == 48);
static_assert(offsetof(ORUDoJsonCtxData, user) == 56);

static_assert(offsetof(oru_json_type_info, tag) == 0);
static_assert(offsetof(oru_json_type_info, type_code) == 8);
static_assert(offsetof(oru_json_type_info, value_type_code) == 16);
static_assert(offsetof(oru_json_type_info, deserialiser) == 24);
static_assert(sizeof(oru_json_type_info) == 32);

struct Item {
    const char *key;
    int32_t key_len;
    int64_t type;
    union {
        int64_t integer;
        double real;
        const char *text;
    } scalar;
    int32_t scalar_len;
    void *obj;
    Item *next;
};

struct Element {
    const char *tag;
    int32_t tag_len;
    const oru_json_type_info *type_info;
    int32_t in_array;
    int32_t unknown;
    Item *items;
    Item *items_tail;
    Item *tag_items;
    Item *tag_items_tail;
    Item *pending;
    void *obj;
    int32_t depth;
    Element *parent;
};

const Element &top_of(const Context &ctx) {
    return *reinterpret_cast<const Element *>(ctx->top);
}

// The element of a complete object stays on the stack.
TEST(JsonLayout, AnElementHoldsItsTagsAndMembers) {
    constexpr std::string_view text =
        R"({"%properties":{"a":5,"b":2.5,"c":"x","d":true,"e":null,"f":{"%int":1}},"%typedef":"T"})";
    const Context ctx(oru_do_json_parse(text.data(), static_cast<int32_t>(text.size()), 7));
    EXPECT_EQ(ctx->expected, 7);
    EXPECT_EQ(ctx->completed_type, 0x400100);
    const Element &element = top_of(ctx);
    EXPECT_EQ(element.tag, text.data() + 2);  // within the text itself
    EXPECT_EQ(element.tag_len, 11);
    EXPECT_EQ(element.type_info, oru_json_get_type_info("%properties", 11));
    EXPECT_EQ(element.in_array, 0);
    EXPECT_EQ(element.unknown, 0);
    EXPECT_EQ(element.pending, nullptr);
    EXPECT_EQ(element.obj, nullptr);
    EXPECT_EQ(element.depth, 1);
    EXPECT_EQ(element.parent, nullptr);

    const int64_t types[] = {0x40000, 0x80000, 0x20000, 0x100000, 0x200000, 0x50006};
    const Item *item = element.items;
    char key = 'a';
    for (const int64_t type : types) {
        ASSERT_NE(item, nullptr) << key;
        EXPECT_EQ(item->type, type) << key;
        EXPECT_EQ(*item->key, key++);
        EXPECT_EQ(item->key_len, 1);
        EXPECT_EQ(item->scalar_len, type == 0x20000 ? 1 : -1);
        EXPECT_EQ(item->obj != nullptr, type == 0x50006);
        if (item->next == nullptr) {
            EXPECT_EQ(element.items_tail, item);
        }
        item = item->next;
    }
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(element.items->scalar.integer, 5);
    EXPECT_EQ(element.items->next->scalar.real, 2.5);
    EXPECT_EQ(element.items->next->next->scalar.text, text.data() + text.find("x\""));
    EXPECT_EQ(element.items->next->next->next->scalar.integer, 1);

    ASSERT_NE(element.tag_items, nullptr);
    EXPECT_EQ(element.tag_items, element.tag_items_tail);
    EXPECT_EQ(std::strncmp(element.tag_items->key, "%typedef", 8), 0);
    EXPECT_EQ(element.tag_items->key_len, 8);
    EXPECT_EQ(element.tag_items->scalar_len, 1);
    EXPECT_EQ(element.tag_items->next, nullptr);
}

TEST(JsonLayout, ATableStandsInItsElement) {
    const Context ctx = parsed(R"({"%vtable":[[1],[2]]})");
    const Element &element = top_of(ctx);
    EXPECT_EQ(element.in_array, 1);
    EXPECT_NE(element.obj, nullptr);
    EXPECT_EQ(element.obj, ctx->completed_obj);
}

TEST(JsonLayout, ElementsOfAnArrayHaveNoKey) {
    const Context ctx = parsed(R"({"%vlist":[[1],[2]]})");
    const Element &element = top_of(ctx);
    EXPECT_EQ(element.in_array, 1);
    EXPECT_EQ(element.obj, nullptr);
    ASSERT_NE(element.items, nullptr);
    EXPECT_EQ(element.items->key, nullptr);
    EXPECT_EQ(element.items->key_len, -1);
    EXPECT_EQ(element.items->type, 0x800103);
    EXPECT_EQ(element.items->next, element.items_tail);
}

TEST(JsonLayout, AnUnfinishedTextLeavesItsStack) {
    const Context ctx = parsed(R"({"%properties":{"a":{"%nope":[{"x":1}, )");
    const Element &element = top_of(ctx);
    EXPECT_EQ(element.unknown, 1);
    EXPECT_EQ(element.type_info, nullptr);
    EXPECT_EQ(element.depth, 2);
    EXPECT_EQ(element.items, nullptr);
    ASSERT_NE(element.parent, nullptr);
    EXPECT_EQ(element.parent->depth, 2);
    EXPECT_NE(element.parent->pending, nullptr);
    EXPECT_EQ(element.parent->pending, element.parent->items);
    EXPECT_EQ(element.parent->parent, nullptr);
    EXPECT_EQ(ctx->completed_obj, nullptr);
}

// A scalar by itself is given back at once.
TEST(JsonLayout, AScalarLeavesNoElement) {
    const Context ctx = parsed("[true]");
    EXPECT_EQ(ctx->top, nullptr);
    EXPECT_EQ(ctx->completed_type, 0x11000A);
}

}  // namespace
