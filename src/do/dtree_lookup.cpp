// Values of a node, and finding nodes and values by path and by URI.
#include <cstring>
#include <string_view>

#include "do/dtree.h"
#include "do/error.h"
#include "do/name.h"
#include "do/properties.h"
#include "do/uri.h"
#include "do/value.h"
#include "frame/text.h"
#include "oru/rc.h"
#include "oru/util.h"

namespace {

constexpr const char *kUriAttribute = "_uri";

void store_memory_error(ORUDoError **error, const char *text) {
    if (error != nullptr)
        *error = oru_do_error_new(ORU_RC_MALLOC, text);
}

oru::Text duplicate_stripped(const char *text) {
    return oru::Text(
        oru_util_strndup_strip_end_chars(text, static_cast<int32_t>(std::strlen(text)), " "));
}

void cut_trailing_slash(char *text) {
    const size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '/')
        text[length - 1] = '\0';
}

// A path cut into its segments. Empty segments stay: "a//b" has three, "/" a single empty one.
class Path {
  public:
    Path() = default;
    Path(const Path &) = delete;
    Path &operator=(const Path &) = delete;
    ~Path() {
        if (segments_ != nullptr)
            ph_free_named(segments_);
    }

    // False when memory ran out, with an error in the slot.
    bool split(const char *path, ORUDoError **error) {
        text_ = duplicate_stripped(path);
        if (!text_) {
            store_memory_error(error, "failed to dup path");
            return false;
        }
        cut_trailing_slash(text_.get());
        const size_t count = count_segments();
        segments_ = static_cast<char **>(
            ph_malloc_named(tag_word(oru::Tag::dtree_misc), count * sizeof(char *)));
        if (segments_ == nullptr) {
            store_memory_error(error, "failed to alloc segments");
            return false;
        }
        cut_segments();
        return true;
    }

    size_t size() const { return size_; }
    const char *operator[](size_t index) const { return segments_[index]; }

  private:
    size_t count_segments() const {
        size_t count = 1;
        const char *text = text_.get();
        for (size_t i = 1; text[0] != '\0' && text[i] != '\0'; ++i)
            count += text[i] == '/';
        return count;
    }

    void cut_segments() {
        char *segment = text_.get() + (*text_.get() == '/');
        for (;;) {
            segments_[size_++] = segment;
            char *slash = std::strchr(segment, '/');
            if (slash == nullptr)
                return;
            *slash = '\0';
            segment = slash + 1;
        }
    }

    oru::Text text_;
    char **segments_ = nullptr;
    size_t size_ = 0;
};

ORUDoDtree *step(ORUDoDtree *node, const char *segment) {
    if (std::strcmp(segment, ".") == 0)
        return node;
    if (std::strcmp(segment, "..") == 0)
        return node->parent;
    return oru_do_dtree_get_child_by_name(node, segment);
}

// Where the first `count` segments lead to from `node`, or null.
ORUDoDtree *walk(ORUDoDtree *node, const Path &path, size_t count) {
    for (size_t i = 0; i < count && node != nullptr; ++i)
        node = step(node, path[i]);
    return node;
}

ORUDoDtree *start_of(ORUDoDtree *dtree, const char *path) {
    return path[0] == '/' ? oru_do_dtree_get_root(dtree) : dtree;
}

ORUDoValue *value_at(ORUDoDtree *dtree, ORUDoDtree *start, const Path &path) {
    if (path.size() == 1)
        return oru_do_dtree_get_value(dtree, path[0]);
    ORUDoDtree *node = walk(start, path, path.size() - 1);
    // A path that leads nowhere: its head is taken as an attribute of the node.
    return node != nullptr ? oru_do_dtree_get_value(node, path[path.size() - 1])
                           : oru_do_dtree_get_value(dtree, path[0]);
}

}  // namespace

ORUDoValue *oru_do_dtree_get_value(ORUDoDtree *dtree, const char *name_text) {
    ORU_REQUIRE(dtree);
    if (name_text == nullptr)
        return nullptr;
    ORUDoValue *value = dtree->properties != nullptr
                            ? oru_do_properties_get_value(dtree->properties, name_text)
                            : nullptr;
    if (value == nullptr && std::strcmp(name_text, kUriAttribute) == 0)
        return dtree->mr_uri;
    return value;
}

void oru_do_dtree_set_value(ORUDoDtree *dtree, const char *name_text, ORUDoValue *value) {
    ORU_REQUIRE(dtree);
    if (dtree->properties == nullptr)
        dtree->properties = oru_do_properties_new();
    if (dtree->properties == nullptr)
        return;
    ORUDoProperty *property = oru_do_properties_get_prop(dtree->properties, name_text);
    if (property != nullptr) {
        oru_do_property_set_value(property, value);
    } else {
        oru_do_properties_set_value(dtree->properties, name_text, value);
    }
}

ORUDoDtree *oru_do_dtree_get_node_by_path(ORUDoDtree *dtree, const char *path, ORUDoError **error) {
    ORU_REQUIRE(dtree);
    if (path == nullptr || path[0] == '\0')
        return nullptr;
    Path segments;
    if (!segments.split(path, error))
        return nullptr;
    return walk(start_of(dtree, path), segments, segments.size());
}

ORUDoValue *oru_do_dtree_get_value_by_path(ORUDoDtree *dtree, const char *path,
                                           ORUDoValue *default_value, ORUDoError **error) {
    ORU_REQUIRE(dtree);
    if (path == nullptr)
        return default_value;
    Path segments;
    if (!segments.split(path, error))
        return default_value;
    ORUDoValue *value = value_at(dtree, start_of(dtree, path), segments);
    return value != nullptr ? value : default_value;
}

ORUDoDtree *oru_do_dtree_get_node_by_uri(ORUDoDtree *dtree, ORUDoUri *uri) {
    ORU_REQUIRE(dtree);
    ORU_REQUIRE(uri);
    ORUDoUri *own = oru_do_dtree_get_mr_uri(dtree);
    if (own != nullptr && oru_do_uri_equals(own, uri) != 0)
        return dtree;
    for (ORUDoDtree *child = dtree->children; child != nullptr; child = child->next) {
        if (ORUDoDtree *found = oru_do_dtree_get_node_by_uri(child, uri))
            return found;
    }
    return nullptr;
}

ORUDoValue *oru_do_dtree_get_value_by_uri(ORUDoDtree *dtree, const char *query_uri,
                                          ORUDoValue *default_value, ORUDoError **error) {
    ORU_REQUIRE(dtree);
    oru::Text text = query_uri != nullptr ? duplicate_stripped(query_uri) : oru::Text();
    const char *path = nullptr;
    oru::Ref<ORUDoUri> uri;
    if (text) {
        cut_trailing_slash(text.get());
        if (char *hash = std::strchr(text.get(), '#')) {
            *hash = '\0';
            path = hash + 1;
        }
        uri = oru::Ref<ORUDoUri>::adopt(oru_do_uri_new(text.get()));
    }
    if (!uri) {
        store_memory_error(error, "failed to dup uri");
        return default_value;
    }
    ORUDoDtree *node = oru_do_dtree_get_node_by_uri(dtree, uri.get());
    return node != nullptr ? oru_do_dtree_get_value_by_path(node, path, default_value, error)
                           : default_value;
}

int32_t oru_do_dtree_get_errors(ORUDoDtree *dtree, ORUDoErrorList *error_list) {
    if (dtree == nullptr || error_list == nullptr)
        return 0;
    int32_t added = 0;
    if (dtree->error != nullptr && oru_do_error_list_add(error_list, dtree->error) >= 0)
        ++added;
    for (ORUDoDtree *child = dtree->children; child != nullptr; child = child->next)
        added += oru_do_dtree_get_errors(child, error_list);
    return added;
}
