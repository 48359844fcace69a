#include "filter.h"

#include <string.h>

#define NAME_SIZE 128

/* What `oru_do_value_compare_nostrict` must give for a value to pass. */
struct operator{
    const char *word;
    int less, equal, greater;
};

static const struct operator operators[] = {
    {"", 0, 1, 0},  {"=", 0, 1, 0},  {">", 0, 0, 1},  {">=", 0, 1, 1},
    {"<", 1, 0, 0}, {"<=", 1, 1, 0}, {"<>", 1, 0, 1},
};

static const struct operator* find_operator(const char *word) {
    for (size_t i = 0; i < sizeof operators / sizeof *operators; i++) {
        if (strcmp(operators[i].word, word) == 0)
            return &operators[i];
    }
    return NULL;
}

/* Copies the part of `text` in front of its first blank and gives what stands behind it. */
static const char *split(const char *text, char name[NAME_SIZE]) {
    const char *blank = strchr(text, ' ');
    size_t length = blank != NULL ? (size_t)(blank - text) : strlen(text);
    if (length >= NAME_SIZE)
        length = NAME_SIZE - 1;
    memcpy(name, text, length);
    name[length] = '\0';
    return blank != NULL ? blank + 1 : "";
}

static int passes_comparison(const char *item_name, ORUDoValue *wanted, ORUDoProperties *props) {
    char name[NAME_SIZE];
    const struct operator* op = find_operator(split(item_name, name));
    if (op == NULL)
        return -1;
    ORUDoValue *value = oru_do_properties_get_value(props, name);
    if (value == NULL)
        return 0;
    switch (oru_do_value_compare_nostrict(value, wanted)) {
        case -1:
            return op->less;
        case 0:
            return op->equal;
        case 1:
            return op->greater;
        default:
            return 0; /* values without an order */
    }
}

static int passes_all(ORUDoNvlist *where, ORUDoProperties *props);

static int passes_any(ORUDoNvlist *items, ORUDoProperties *props);

static int passes_item(ORUDoNvlistItem *item, ORUDoProperties *props) {
    const char *name = oru_do_nvlist_item_get_name(item);
    ORUDoValue *value = oru_do_nvlist_item_get_value(item);
    int32_t rc = 0;
    if (strcmp(name, " AND ") == 0)
        return passes_all(oru_do_value_get_sequence(value, &rc), props);
    if (strcmp(name, " OR ") == 0)
        return passes_any(oru_do_value_get_sequence(value, &rc), props);
    return passes_comparison(name, value, props);
}

/* The first item whose verdict is not `usual` decides. */
static int passes(ORUDoNvlist *items, ORUDoProperties *props, int usual) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_nvlist_iter(items, &iter); oru_do_nvlist_has_next(&iter);) {
        int verdict = passes_item(oru_do_nvlist_get_next(&iter), props);
        if (verdict != usual)
            return verdict;
    }
    return usual;
}

static int passes_all(ORUDoNvlist *where, ORUDoProperties *props) {
    return passes(where, props, 1);
}

static int passes_any(ORUDoNvlist *items, ORUDoProperties *props) {
    return passes(items, props, 0);
}

int filter_passes(ORUDoNvlist *where, ORUDoProperties *props) {
    return where == NULL ? 1 : passes_all(where, props);
}

/* A resource without the attribute comes first. */
static int compare_by(const char *entry, ORUDoProperties *a, ORUDoProperties *b) {
    char name[NAME_SIZE];
    int falling = strcmp(split(entry, name), "desc") == 0;
    ORUDoValue *value_a = oru_do_properties_get_value(a, name);
    ORUDoValue *value_b = oru_do_properties_get_value(b, name);
    if (value_a == NULL || value_b == NULL)
        return (value_a != NULL) - (value_b != NULL);
    int32_t result = oru_do_value_compare(value_a, value_b);
    if (result == -2)
        return 0;
    return falling ? -result : result;
}

int filter_order(ORUDoNlist *order, ORUDoProperties *a, ORUDoProperties *b) {
    if (order == NULL)
        return 0;
    int result = 0;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_nlist_iter(order, &iter); result == 0 && oru_do_nlist_has_next(&iter);) {
        result = compare_by(oru_do_name_get_strname(oru_do_nlist_get_next(&iter)), a, b);
    }
    return result;
}
