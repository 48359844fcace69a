// Addresses built from the names of the sample model, walked through its metadata and compared
// with a second, plain walk over the same records; and any text as the name of something in it.
#include <oru/md.h>
#include <oru/md_lookup.h>
#include <oru/mr_meta.h>
#include <oru/name.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/poolheap.h>

#include <set>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/no_locks.h"

namespace {

// The names of the model, in the order of the alphabet.
struct Model {
    std::vector<ORUMdMrMeta *> resources;
    std::vector<std::string> references;
    std::vector<std::string> keys;
    std::vector<std::string> values{"", "1", "ospf", "bgp", "static", "10.0.0.0%2F8", "eth0"};

    Model() {
        oru_md_set_root_mr_type("com.example.network:1.0/System");
        ORUMdPkgBundle *bundle = nullptr;
        CHECK(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle) == 0);
        CHECK(bundle != nullptr);
        std::set<std::string> refs{"none"}, key_names{"none"};
        for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
            for (auto *mr = package->mrs; mr != nullptr; mr = mr->next) {
                resources.push_back(mr);
                for (auto *ref = mr->refs; ref != nullptr; ref = ref->next)
                    refs.insert(oru_do_name_get_strname(ref->name));
                for (auto *chain : {mr->primary_keys, mr->secondary_keys}) {
                    for (auto *key = chain; key != nullptr; key = key->next)
                        key_names.insert(oru_do_name_get_strname(key->name));
                }
            }
        }
        references.assign(refs.begin(), refs.end());
        keys.assign(key_names.begin(), key_names.end());
    }
};

const Model &model() {
    static const Model loaded;
    return loaded;
}

// The bytes of the input as choices; zeros when there are no more.
struct Choices {
    const uint8_t *data;
    size_t size;

    uint8_t next() {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }
    template <class Item>
    const Item &of(const std::vector<Item> &items) {
        return items[next() % items.size()];
    }
};

// ---- The plain walk ----

struct Outcome {
    ORUMdMrMeta *mr = nullptr;
    int32_t remainder = 0;
    uint8_t secondary = 0;
    ORUMdRefMeta *peer = nullptr;
};

using Keys = std::vector<std::pair<std::string, std::string>>;

Keys keys_of(ORUDoUri *uri, int32_t index) {
    Keys keys;
    auto *list = oru_do_uri_segment_get_keys(oru_do_uri_get_segment(uri, index));
    for (int32_t i = 0; list != nullptr && i < oru_do_nvlist_get_len(list); ++i) {
        auto *item = oru_do_nvlist_get_item(list, i);
        int32_t rc = 0;
        keys.emplace_back(oru_do_nvlist_item_get_name(item),
                          oru_do_value_get_string(oru_do_nvlist_item_get_value(item), &rc));
    }
    return keys;
}

ORUMdRefMeta *named_ref(ORUMdMrMeta *mr, const std::string &name) {
    for (auto *ref = mr->refs; ref != nullptr; ref = ref->next) {
        if (name == oru_do_name_get_strname(ref->name))
            return ref;
    }
    return nullptr;
}

bool has_key(ORUMdAttrMeta *chain, const std::string &name) {
    for (; chain != nullptr; chain = chain->next) {
        if (name == oru_do_name_get_strname(chain->name))
            return true;
    }
    return false;
}

bool keys_fit(ORUMdMrMeta *target, const Keys &keys, uint8_t &secondary) {
    for (size_t i = 0; i < keys.size(); ++i) {
        if (has_key(target->primary_keys, keys[i].first))
            continue;
        if (!has_key(target->secondary_keys, keys[i].first))
            return false;
        if (secondary == 0 && i > 0)
            return false;
        secondary = 1;
    }
    return true;
}

// The reference that a segment takes; `secondary` is only written when there is one.
ORUMdRefMeta *taken_ref(ORUMdMrMeta *current, const std::string &name, const Keys &keys,
                        uint8_t &secondary) {
    if (auto *ref = named_ref(current, name)) {
        const bool is_library = ref->target_mr->is_lib != 0;
        return is_library || keys_fit(ref->target_mr, keys, secondary) ? ref : nullptr;
    }
    ORUMdRefMeta *taken = nullptr;
    uint8_t taken_secondary = secondary;
    for (auto *entry = current->impl_mr_metas; entry != nullptr; entry = entry->next) {
        auto *ref = named_ref(entry->mr, name);
        uint8_t marked = secondary;
        if (ref == nullptr || !keys_fit(ref->target_mr, keys, marked))
            continue;
        if (taken != nullptr)
            return nullptr;
        taken = ref;
        taken_secondary = marked;
    }
    secondary = taken_secondary;
    return taken;
}

ORUMdMrMeta *selected(ORUMdMrMeta *library, const Keys &keys) {
    for (auto *entry = library->impl_mr_metas; keys.size() == 1 && entry != nullptr;
         entry = entry->next) {
        auto *constant = oru_md_get_const_key(entry->mr);
        int32_t rc = 0;
        if (constant != nullptr && keys[0].second == oru_do_value_get_string(constant, &rc))
            return entry->mr;
    }
    return library;
}

void plain_walk(ORUDoUri *uri, int32_t last_segs, ORUMdMrMeta *current, Outcome &out) {
    const int32_t count = oru_do_uri_get_segment_count(uri);
    int32_t index = last_segs > 0 ? count - last_segs : 0;
    if (current == nullptr)
        current = oru_md_get_mr_meta_by_name("com.example.network/System");
    if (index == 0 && oru_do_uri_is_root(uri) != 0) {
        out.mr = current;
        if (current->is_lib != 0)
            out.mr = current->impl_mr_metas != nullptr ? current->impl_mr_metas->mr : nullptr;
        return;
    }
    if (count <= index || index < 0)
        return;
    for (; index < count; ++index) {
        const Keys keys = keys_of(uri, index);
        auto *ref =
            taken_ref(current, oru_do_uri_segment_get_name(oru_do_uri_get_segment(uri, index)),
                      keys, out.secondary);
        if (ref == nullptr)
            return;
        if (oru_do_prop_meta_get_ref_role(ref->prop_meta) == ORU_REF_PEER)
            out.peer = ref;
        else
            current = ref->target_mr->is_lib != 0 ? selected(ref->target_mr, keys) : ref->target_mr;
        if (oru_do_mr_meta_is_oper_data(current->do_mr_meta) != 0)
            out.secondary = 0;
        if (out.peer != nullptr || current->is_lib != 0 || out.secondary != 0) {
            out.remainder = count - index - 1;
            break;
        }
    }
    out.mr = current;
}

// ---- The address ----

std::string built_address(Choices &choices) {
    std::string address;
    for (int segments = choices.next() % 8; segments > 0; --segments) {
        address += "/" + choices.of(model().references);
        for (int keys = choices.next() % 3; keys > 0; --keys)
            address += ";" + choices.of(model().keys) + "=" + choices.of(model().values);
    }
    return address.empty() ? "//" : address;
}

void walk(ORUDoUri *uri, Choices choices) {
    const auto start = choices.next();
    auto *from = start % 4 == 0 ? nullptr : model().resources[start % model().resources.size()];
    const int32_t last_segs = static_cast<int8_t>(choices.next()) % 4;
    const bool with_outputs = choices.next() % 2 == 0;
    Outcome expected, found;
    if (with_outputs) {
        expected.secondary = choices.next() % 8 == 1 ? 1 : 0;
        if (choices.next() % 8 == 1)
            expected.peer = model().resources[0]->refs;
        found = expected;
    }
    plain_walk(uri, last_segs, from, expected);
    ORUDoNvlist *keys = nullptr;
    found.mr = oru_md_get_mr_meta_by_uri(uri, last_segs, from, &found.remainder, &keys,
                                         with_outputs ? &found.secondary : nullptr,
                                         with_outputs ? &found.peer : nullptr);
    CHECK(found.mr == expected.mr);
    CHECK(found.remainder == expected.remainder);
    if (with_outputs && found.mr != nullptr) {
        CHECK(found.peer == expected.peer);
        CHECK(found.secondary == expected.secondary);
    }
    if (found.mr != nullptr)
        CHECK(oru_md_mr_meta_to_string(found.mr) != nullptr);
}

void look_up(const std::string &text) {
    const char *name = text.c_str();
    oru_md_get_pkg_meta_by_name(name);
    oru_md_get_cd_meta_by_name(name);
    oru_md_get_od_meta_by_name(name);
    oru_md_get_typedef_meta_by_name(name);
    oru_md_get_enum_value_by_name(name);
    auto *mr = oru_md_get_mr_meta_by_name(name);
    auto *attr = oru_md_get_attr_meta_by_name(name);
    auto *ref = oru_md_get_ref_meta_by_name(name);
    // What has an attribute or a reference of that name is a resource too.
    CHECK((attr == nullptr && ref == nullptr) || mr != nullptr);
}

}  // namespace

// The first byte tells whether an address is built or the rest is taken as it stands.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    model();
    if (size == 0)
        return 0;
    const uint64_t live = poolheap_live_blocks();
    Choices choices{data + 1, size - 1};
    const std::string address =
        data[0] % 4 != 0 ? built_address(choices)
                         : std::string(reinterpret_cast<const char *>(data) + 1, size - 1).c_str();
    if (const fuzz::Uri uri{oru_do_uri_validate_new(address.c_str())})
        walk(uri.get(), choices);
    look_up(address);
    CHECK(poolheap_live_blocks() == live);
    return 0;
}
