#include "bench/json_contenders.h"

#include <oru/json.h>
#include <oru/oru.h>
#include <oruplatform/chunk.h>
#include <yajl/yajl_gen.h>
#include <yajl/yajl_parse.h>
#include <yajl/yajl_tree.h>

#include <cstdlib>
#include <cstring>

#ifdef ORU_BENCH_JANSSON
#include <jansson.h>
#endif
#ifdef ORU_BENCH_JSONC
#include "bench/json_c_peer.h"
#endif
#ifdef ORU_BENCH_LIBYANG
#include <libyang/libyang.h>
#endif
#ifdef ORU_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace oru::bench {
namespace {

// ---- Ours ----

void *read_ours(const Document &document) {
    const char *text = document.wire.data();
    const auto length = static_cast<int32_t>(document.wire.size());
    switch (document.shape) {
        case Shape::properties_list:
            return oru_do_properties_list_from_json(text, length, nullptr);
        case Shape::data_tree:
            return oru_do_dtree_from_json(text, length, nullptr);
        default:
            return oru_do_vtable_from_json(text, length, nullptr);
    }
}

int64_t type_code(Shape shape) {
    switch (shape) {
        case Shape::properties_list:
            return 0x800105;
        case Shape::data_tree:
            return 0x400119;
        default:
            return 0x80010F;
    }
}

template <Shape shape>
void release_ours(void *tree) {
    oru_do_json_free_obj(type_code(shape), tree);
}

size_t write_ours(void *tree, Shape shape) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    switch (shape) {
        case Shape::properties_list:
            oru_do_properties_list_to_json(static_cast<ORUDoPropertiesList *>(tree), buf);
            break;
        case Shape::data_tree:
            oru_do_dtree_to_json(static_cast<ORUDoDtree *>(tree), buf);
            break;
        default:
            oru_do_vtable_to_json(static_cast<ORUDoVtable *>(tree), buf);
    }
    const int32_t length = oru_do_strbuf_get_err(buf) == 0 ? oru_do_strbuf_get_len(buf) : 0;
    oru_do_strbuf_deref(buf);
    return static_cast<size_t>(length);
}

// ---- yajl: events that nobody looks at, and its generator on its own tree ----

int nothing(void *) {
    return 1;
}
int no_boolean(void *, int) {
    return 1;
}
int no_number(void *, const char *, size_t) {
    return 1;
}
int no_text(void *, const unsigned char *, size_t) {
    return 1;
}

constexpr yajl_callbacks kNoEvents{nothing, no_boolean, nullptr, nullptr, no_number, no_text,
                                   nothing, no_text,    nothing, nothing, nothing};

const unsigned char *bytes_of(const char *text) {
    return reinterpret_cast<const unsigned char *>(text);
}

void *read_with_yajl(const Document &document) {
    yajl_handle handle = yajl_alloc(&kNoEvents, nullptr, nullptr);
    const yajl_status status =
        yajl_parse(handle, bytes_of(document.wire.data()), document.wire.size());
    yajl_free(handle);
    return status == yajl_status_ok ? const_cast<yajl_callbacks *>(&kNoEvents) : nullptr;
}

void release_nothing(void *) {}

void *read_into_yajl_tree(const Document &document) {
    return yajl_tree_parse(document.wire.c_str(), nullptr, 0);
}

void release_yajl_tree(void *tree) {
    yajl_tree_free(static_cast<yajl_val>(tree));
}

void generate(yajl_gen generator, yajl_val value) {
    switch (value->type) {
        case yajl_t_object:
            yajl_gen_map_open(generator);
            for (size_t i = 0; i < value->u.object.len; i++) {
                const char *key = value->u.object.keys[i];
                yajl_gen_string(generator, bytes_of(key), std::strlen(key));
                generate(generator, value->u.object.values[i]);
            }
            yajl_gen_map_close(generator);
            break;
        case yajl_t_array:
            yajl_gen_array_open(generator);
            for (size_t i = 0; i < value->u.array.len; i++)
                generate(generator, value->u.array.values[i]);
            yajl_gen_array_close(generator);
            break;
        case yajl_t_string:
            yajl_gen_string(generator, bytes_of(value->u.string), std::strlen(value->u.string));
            break;
        case yajl_t_number:
            if (YAJL_IS_INTEGER(value)) {
                yajl_gen_integer(generator, value->u.number.i);
            } else {
                yajl_gen_double(generator, value->u.number.d);
            }
            break;
        case yajl_t_true:
        case yajl_t_false:
            yajl_gen_bool(generator, value->type == yajl_t_true ? 1 : 0);
            break;
        default:
            yajl_gen_null(generator);
    }
}

size_t write_with_yajl(void *tree, Shape) {
    yajl_gen generator = yajl_gen_alloc(nullptr);
    generate(generator, static_cast<yajl_val>(tree));
    const unsigned char *text = nullptr;
    size_t length = 0;
    yajl_gen_get_buf(generator, &text, &length);
    yajl_gen_free(generator);
    return length;
}

// ---- jansson ----

#ifdef ORU_BENCH_JANSSON
void *read_with_jansson(const Document &document) {
    return json_loadb(document.wire.data(), document.wire.size(), 0, nullptr);
}

void release_jansson(void *tree) {
    json_decref(static_cast<json_t *>(tree));
}

size_t write_with_jansson(void *tree, Shape) {
    char *text = json_dumps(static_cast<json_t *>(tree), JSON_COMPACT);
    const size_t length = text != nullptr ? std::strlen(text) : 0;
    std::free(text);
    return length;
}
#endif

// ---- json-c ----

#ifdef ORU_BENCH_JSONC
void *read_json_c(const Document &document) {
    return read_with_json_c(document.wire.data(), document.wire.size());
}
#endif

// ---- libyang: the same data under a module that describes it ----

#ifdef ORU_BENCH_LIBYANG
ly_ctx *yang_context() {
    static ly_ctx *context = [] {
        ly_ctx *made = nullptr;
        ly_log_level(LY_LLERR);
        if (ly_ctx_new(nullptr, 0, &made) == LY_SUCCESS)
            lys_parse_mem(made, kYangModule, LYS_IN_YANG, nullptr);
        return made;
    }();
    return context;
}

void *read_with_libyang(const Document &document) {
    lyd_node *tree = nullptr;
    const LY_ERR status = lyd_parse_data_mem(yang_context(), document.yang.c_str(), LYD_JSON,
                                             LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0, &tree);
    return status == LY_SUCCESS ? tree : nullptr;
}

void release_libyang(void *tree) {
    lyd_free_all(static_cast<lyd_node *>(tree));
}
#endif

// ---- RapidJSON ----

#ifdef ORU_BENCH_RAPIDJSON
void *read_with_rapidjson(const Document &document) {
    auto *tree = new rapidjson::Document;
    tree->Parse(document.wire.data(), document.wire.size());
    if (!tree->HasParseError())
        return tree;
    delete tree;
    return nullptr;
}

void release_rapidjson(void *tree) {
    delete static_cast<rapidjson::Document *>(tree);
}

size_t write_with_rapidjson(void *tree, Shape) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    static_cast<rapidjson::Document *>(tree)->Accept(writer);
    return text.GetSize();
}
#endif

Contender ours(Shape shape) {
    switch (shape) {
        case Shape::properties_list:
            return {"ours", read_ours, release_ours<Shape::properties_list>, write_ours};
        case Shape::data_tree:
            return {"ours", read_ours, release_ours<Shape::data_tree>, write_ours};
        default:
            return {"ours", read_ours, release_ours<Shape::value_table>, write_ours};
    }
}

}  // namespace

std::vector<Contender> readers(Shape shape) {
    return {
        ours(shape),
        {"yajl", read_with_yajl, release_nothing, nullptr},
#ifdef ORU_BENCH_JANSSON
        {"jansson", read_with_jansson, release_jansson, nullptr},
#endif
#ifdef ORU_BENCH_JSONC
        {"json-c", read_json_c, release_json_c, nullptr},
#endif
#ifdef ORU_BENCH_LIBYANG
        {"libyang", read_with_libyang, release_libyang, nullptr},
#endif
    };
}

std::vector<Contender> writers(Shape shape) {
    return {
        ours(shape),
        {"yajl_gen", read_into_yajl_tree, release_yajl_tree, write_with_yajl},
#ifdef ORU_BENCH_JANSSON
        {"jansson", read_with_jansson, release_jansson, write_with_jansson},
#endif
#ifdef ORU_BENCH_RAPIDJSON
        {"RapidJSON", read_with_rapidjson, release_rapidjson, write_with_rapidjson},
#endif
    };
}

void size_json_pools() {
    for (auto *init :
         {init_chunk_poolheap_json, init_chunk_poolheap_oru_do_name, init_chunk_poolheap_oru_do_uri,
          init_chunk_poolheap_oru_do_uri_misc, init_chunk_poolheap_oru_do_uri_sml_misc,
          init_chunk_poolheap_oru_do_value, init_chunk_poolheap_oru_do_value_misc,
          init_chunk_poolheap_oru_do_value_sml_misc, init_chunk_poolheap_oru_do_property,
          init_chunk_poolheap_oru_do_properties, init_chunk_poolheap_oru_do_properties_list,
          init_chunk_poolheap_oru_do_properties_list_item, init_chunk_poolheap_oru_do_dtree,
          init_chunk_poolheap_oru_do_vlist, init_chunk_poolheap_oru_do_vlist_item,
          init_chunk_poolheap_oru_do_vtable, init_chunk_poolheap_oru_do_vtable_item,
          init_chunk_poolheap_oru_do_strbuf, init_chunk_poolheap_oru_do_strbuf_misc})
        init(1024, CHUNK_FLAG_GROW);
}

}  // namespace oru::bench
