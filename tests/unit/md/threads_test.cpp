// One thread loads and frees the store again and again while others read it under the lock and keep
// descriptions beyond it.
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/nlist.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/properties.h>
#include <oru/typedef_meta.h>
#include <oru/uri.h>
#include <oru/value.h>

#include <atomic>
#include <thread>

#include "tests/unit/md/store_support.h"

namespace {

constexpr int kRounds = 40;
constexpr int kReaders = 4;

// What a reader finds: everything of the loaded store, or nothing of an absent one.
void read_once(ORUDoMrMeta *&kept, std::atomic<int> &seen) {
    auto *uri = oru_do_uri_new("/chassis;id=1/slots;number=2/ports;name=eth0");
    oru_do_uri_get_segment_count(uri);
    if (oru_md_rdlock() == 0) {
        int32_t rest = 0;
        auto *port = oru_md_get_mr_meta_by_uri(uri, 0, nullptr, &rest, nullptr, nullptr, nullptr);
        if (port != nullptr) {
            EXPECT_STREQ(oru_md_mr_meta_to_string(port), "Port");
            oru_do_mr_meta_deref(kept);
            kept = oru_do_mr_meta_ref(port->do_mr_meta);
            seen.fetch_add(1);
        }
        auto *state = oru_md_get_typedef_meta_by_name("com.example.network.lib/Position");
        EXPECT_EQ(state != nullptr, port != nullptr);
        if (state != nullptr) {
            EXPECT_EQ(oru_do_typedef_meta_get_category(oru_md_get_do_typedef_meta(state)), 3);
        }
        EXPECT_EQ(oru_md_unlock(), 0);
    }
    oru_do_uri_deref(uri);
}

TEST(StoreThreads, LoadAndReadSideBySide) {
    oru_md_set_root_mr_type("com.example.network/System");
    std::atomic<bool> done = false;
    std::atomic<int> seen = 0;
    std::thread readers[kReaders];
    for (auto &reader : readers) {
        reader = std::thread([&] {
            ORUDoMrMeta *kept = nullptr;
            while (!done) {
                read_once(kept, seen);
                if (kept != nullptr) {
                    EXPECT_EQ(oru_do_mr_meta_get_prop_count(kept), 15);
                }
                std::this_thread::yield();
            }
            oru_do_mr_meta_deref(kept);
        });
    }
    for (int round = 0; round < kRounds; ++round) {
        EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr), 0);
        for (const int before = seen; seen == before && round % 8 == 0;)
            std::this_thread::yield();
        EXPECT_EQ(oru_md_free(), 0);
    }
    done = true;
    for (auto &reader : readers)
        reader.join();
    EXPECT_GT(seen, 0);
}

// Everything that a reader may ask of one resource: lookups, descriptions, constraints, conditions.
void ask_all(ORUMdMrMeta &mr, ORUDoProperties *props) {
    auto *value = oru_do_value_new_int(1);
    for (auto *attr = mr.cd_attrs; attr != nullptr; attr = attr->next) {
        EXPECT_NE(oru_md_get_attr_meta(&mr, attr->name), nullptr);
        oru_md_eval_attr_constraint(attr, value, props);
        oru_md_get_attr_constraint(attr, props);
        if (attr->typedef_meta != nullptr)
            oru_do_typedef_meta_get_category(oru_md_get_do_typedef_meta(attr->typedef_meta));
        for (int32_t i = 0; auto *each = oru_do_prop_meta_get_constraint(attr->prop_meta, i); ++i) {
            if (auto *values = oru_do_constraint_get_values(each)) {
                EXPECT_NE(oru_do_range_get_range_str(values), nullptr);
            }
        }
    }
    char *message = nullptr;
    oru_md_eval_mr_constraint(&mr, props, &message);
    ORUDoNlist *names = nullptr;
    for (const int32_t kind : {-1, 1})
        oru_do_mr_meta_get_cond_prop_names(mr.do_mr_meta, props, kind, &names);
    oru_do_nlist_deref(names);
    auto *children = oru_do_mr_meta_list_new();
    oru_md_get_descendant_mr_meta_list(&mr, children);
    oru_do_mr_meta_list_deref(children);
    oru_do_value_deref(value);
}

// The first readers of a store fill its caches side by side; then it is loaded anew.
TEST(StoreThreads, FourReadersAskAllOfAStoreThatIsLoadedAgainAndAgain) {
    for (int round = 0; round < kRounds / 8; ++round) {
        ORUMdPkgBundle *bundle = nullptr;
        EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
        ASSERT_NE(bundle, nullptr);
        std::atomic<int> ready = 0;
        std::thread readers[kReaders];
        for (auto &reader : readers) {
            reader = std::thread([&] {
                auto *props = oru_do_properties_new();
                ready.fetch_add(1);
                while (ready < kReaders)
                    std::this_thread::yield();
                EXPECT_EQ(oru_md_rdlock(), 0);
                for (auto *package = bundle->pkgs; package != nullptr; package = package->next) {
                    for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
                        ask_all(*mr, props);
                }
                EXPECT_EQ(oru_md_unlock(), 0);
                oru_do_properties_deref(props);
            });
        }
        for (auto &reader : readers)
            reader.join();
        EXPECT_EQ(oru_md_free(), 0);
    }
}

TEST(StoreThreads, FourLoadersAgreeOnOneStore) {
    for (int round = 0; round < kRounds; ++round) {
        std::atomic<int> first = 0;
        std::thread loaders[4];
        for (auto &loader : loaders) {
            loader = std::thread([&] {
                ORUMdPkgBundle *bundle = nullptr;
                EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
                first.fetch_add(bundle != nullptr);
            });
        }
        for (auto &loader : loaders)
            loader.join();
        EXPECT_EQ(first, 1);
        EXPECT_EQ(oru_md_free(), 0);
    }
}

TEST(StoreThreads, DescriptionsOfTypesAreMadeOnce) {
    for (int round = 0; round < kRounds; ++round) {
        auto *type = oru_md_new_typedef_meta("Speed");
        type->typecode = 6;
        std::atomic<ORUDoTypedefMeta *> found[4] = {};
        std::thread askers[4];
        for (int i = 0; i < 4; ++i)
            askers[i] = std::thread([&, i] { found[i] = oru_md_get_do_typedef_meta(type); });
        for (auto &asker : askers)
            asker.join();
        for (const auto &description : found)
            EXPECT_EQ(description, type->do_typedef_meta);
        oru_md_delete_typedef_meta(type);
    }
}

TEST(StoreThreads, ConstraintsAreReadByAllAtOnce) {
    ASSERT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", nullptr), 0);
    auto *attr = oru_md_get_attr_meta_by_name("com.example.network.lib/Port.mtu");
    ASSERT_NE(attr, nullptr);
    auto *values = oru_do_constraint_get_values(oru_md_get_attr_constraint(attr, nullptr));
    ASSERT_NE(values, nullptr);
    std::thread readers[4];
    const char *texts[4];
    for (int i = 0; i < 4; ++i) {
        readers[i] = std::thread([&, i] {
            auto *fits = oru_do_value_new_unsigned_short(1500);
            auto *small = oru_do_value_new_unsigned_short(67);
            for (int round = 0; round < kRounds; ++round) {
                EXPECT_EQ(oru_md_eval_attr_constraint(attr, fits, nullptr), 0);
                EXPECT_EQ(oru_md_eval_attr_constraint(attr, small, nullptr), 114);
            }
            texts[i] = oru_do_range_get_range_str(values);
            oru_do_value_deref(fits);
            oru_do_value_deref(small);
        });
    }
    for (auto &reader : readers)
        reader.join();
    for (const char *text : texts)
        EXPECT_EQ(text, texts[0]);
    EXPECT_STREQ(texts[0], "68..9216");
    EXPECT_EQ(oru_md_free(), 0);
}

}  // namespace
