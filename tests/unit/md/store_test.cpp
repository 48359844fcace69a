// The records of the store: making, chaining and deleting them, and the lock.
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/ntlist.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/typedef_meta.h>
#include <oru/value.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

// A name for the length of an expression.
struct Name {
    explicit Name(const char *name) : object(oru_do_name_new(name)) {}
    ~Name() { oru_do_name_deref(object); }
    Name(const Name &) = delete;
    Name &operator=(const Name &) = delete;
    operator ORUDoName *() const { return object; }
    ORUDoName *object;
};

ORUMdPkgMeta *new_package(const char *name, int32_t type = ORU_MD_PKG_IMPL) {
    return oru_md_new_pkg_meta(Name(name), "1.0", type);
}

ORUMdMrMeta *new_mr(ORUMdPkgMeta *package, const char *name, const char *parent = nullptr,
                    const char *const_key = nullptr, int32_t is_lib = 0) {
    const Name package_name("com.net"), mr_name(name);
    auto *description = oru_do_mr_meta_new(package_name, "1.0", mr_name, 15, nullptr, nullptr);
    auto *mr = oru_md_new_mr_meta(package, mr_name, description, parent, const_key, is_lib);
    oru_do_mr_meta_deref(description);
    return mr;
}

ORUDoPropMeta *new_prop(const char *name, int32_t category, int32_t role = ORU_REF_NONE,
                        const char *type = "int") {
    return oru_do_prop_meta_new(Name(name), category, 0, 0, nullptr, 5, Name(type), 1, role, 1, 0);
}

ORUMdAttrMeta *new_attr(const char *name) {
    auto *prop = new_prop(name, ORU_PROP_CONFIG);
    auto *attr = oru_md_new_attr_meta(Name(name), nullptr, prop);
    oru_do_prop_meta_deref(prop);
    return attr;
}

ORUMdRefMeta *new_ref(const char *name, int32_t role, const char *target = "p/T") {
    auto *prop = new_prop(name, ORU_PROP_REF, role, target);
    auto *ref = oru_md_new_ref_meta(Name(name), prop);
    oru_do_prop_meta_deref(prop);
    return ref;
}

TEST(StoreLock, EachOperationIsTold) {
    TraceCapture traces;
    EXPECT_EQ(oru_md_wrlock(), 0);
    EXPECT_EQ(oru_md_unlock(), 0);
    EXPECT_EQ(oru_md_rdlock(), 0);
    EXPECT_EQ(oru_md_rdlock(), 0);
    EXPECT_EQ(oru_md_unlock(), 0);
    EXPECT_EQ(oru_md_unlock(), 0);
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{7, "Pending requests terminated, holding new requests\n"},
                                  {7, "Request lock released\n"},
                                  {7, "Request initiation granted\n"},
                                  {7, "Request initiation granted\n"},
                                  {7, "Request lock released\n"},
                                  {7, "Request lock released\n"}}));
}

TEST(StoreLock, FailureIsASystemCallThatFailed) {
    EXPECT_EQ(oru_md_unlock(), 10001);  // nobody holds it
    EXPECT_EQ(oru_md_wrlock(), 0);
    EXPECT_EQ(oru_md_rdlock(), 10001);  // by the writer itself
    EXPECT_EQ(oru_md_unlock(), 0);
}

TEST(Store, EmptyStoreHasItsFourOperations) {
    auto *store = oru_md_map_new();
    EXPECT_EQ(store->bundles, nullptr);
    EXPECT_NE(store->pkg_table, nullptr);
    EXPECT_EQ(store->oru_md_resolve_refs(store, 1), 0);
    EXPECT_EQ(store->oru_md_get_pkg(store, "com.net", nullptr), nullptr);
    oru_md_map_delete(store);
    oru_md_map_delete(nullptr);
}

TEST(Store, WithoutMemoryItTellsWhatIsMissing) {
    oru::test::sweep_oom([] {
        TraceCapture traces(3);
        auto *store = oru_md_map_new();
        if (store == nullptr) {
            EXPECT_TRUE(traces.has(3, "Failed to allocate metadata container\n") ||
                        traces.has(3, "Failed to initialize pkg_meta hashtable\n"));
        }
        oru_md_map_delete(store);
    });
}

TEST(Store, PackageIsKnownByItsNameWhateverTheVersion) {
    TraceCapture traces(3);
    auto *store = oru_md_map_new();
    auto *one = new_package("com.net");
    auto *twin = new_package("com.net");
    EXPECT_EQ(store->oru_md_add_pkg(store, one), 0);
    EXPECT_EQ(store->oru_md_get_pkg(store, "com.net", "9.9"), one);
    EXPECT_EQ(store->oru_md_add_pkg(store, twin), 10000);
    EXPECT_EQ(
        traces.lines(),
        (std::vector<Trace>{{3, "Metadata collision detected: com.net is already present\n"}}));
    EXPECT_EQ(store->oru_md_remove_pkg(store, one), 0);
    EXPECT_EQ(store->oru_md_get_pkg(store, "com.net", nullptr), nullptr);
    oru_md_delete_pkg_meta(one);
    oru_md_delete_pkg_meta(twin);
    oru_md_map_delete(store);
}

TEST(Store, PackageWithoutANameIsRefused) {
    TraceCapture traces(3);
    auto *store = oru_md_map_new();
    auto *package = new_package("com.net");
    oru_do_name_deref(package->name);
    package->name = nullptr;
    EXPECT_EQ(store->oru_md_add_pkg(store, package), 10000);
    EXPECT_TRUE(traces.has(3, "Failed to get package name\n"));
    oru_md_delete_pkg_meta(package);
    oru_md_map_delete(store);
}

TEST(Store, RemovedPackageLeavesTheListsOfItsLibraryResources) {
    auto *store = oru_md_map_new();
    auto *library = new_package("lib", ORU_MD_PKG_LIBRARY);
    auto *impl = new_package("impl");
    auto *port = new_mr(library, "Port", nullptr, nullptr, 1);
    auto *one = new_mr(impl, "One", "lib/Port");
    auto *other = new_mr(impl, "Other", "lib/Port");
    auto *unresolved = new_mr(impl, "Unresolved", "lib/None");
    oru_md_add_mr_meta(library, port);
    for (auto *mr : {one, other, unresolved})
        oru_md_add_mr_meta(impl, mr);
    auto *foreign = new_mr(nullptr, "Foreign");
    oru_md_mr_meta_add_impl_mr_meta(port, one);
    oru_md_mr_meta_add_impl_mr_meta(port, foreign);
    one->parent_mr = port;
    other->parent_mr = port;  // is not listed
    store->oru_md_add_pkg(store, impl);
    EXPECT_EQ(store->oru_md_remove_pkg(store, impl), 0);
    ASSERT_NE(port->impl_mr_metas, nullptr);
    EXPECT_EQ(port->impl_mr_metas->mr, foreign);
    EXPECT_EQ(port->impl_mr_metas->next, nullptr);
    oru_md_delete_mr_meta(foreign);
    oru_md_delete_pkg_meta(impl);
    oru_md_delete_pkg_meta(library);
    oru_md_map_delete(store);
}

TEST(Bundle, NoNameIsTheDefaultName) {
    auto *bundle = oru_md_pkg_bundle_new(nullptr, nullptr);
    EXPECT_STREQ(bundle->name, "quill_default_bundle");
    EXPECT_EQ(oru_md_pkg_bundle_get(bundle, nullptr), bundle);
    EXPECT_EQ(oru_md_pkg_bundle_get(bundle, "quill_default_bundle"), bundle);
    EXPECT_EQ(oru_md_pkg_bundle_get(bundle, "quill_default"), nullptr);
    EXPECT_EQ(oru_md_pkg_bundle_get(nullptr, nullptr), nullptr);
    oru_md_pkg_bundle_delete(bundle);
    oru_md_pkg_bundle_delete(nullptr);
}

TEST(Bundle, DeletionTakesOneWhoseNextWasCleared) {
    auto *first = oru_md_pkg_bundle_new("a", new_package("pa"));
    auto *second = oru_md_pkg_bundle_new("b", new_package("pb"));
    first->next = second;
    first->next = nullptr;
    oru_md_pkg_bundle_delete(first);
    EXPECT_STREQ(second->name, "b");
    EXPECT_EQ(text(second->pkgs->name), "pb");
    oru_md_pkg_bundle_delete(second);
}

TEST(Bundle, DeletionTakesAllBehindIt) {
    auto *first = oru_md_pkg_bundle_new("a", new_package("pa"));
    auto *second = oru_md_pkg_bundle_new("b", new_package("pb"));
    first->next = second;
    EXPECT_EQ(oru_md_pkg_bundle_get(first, "b"), second);
    oru_md_pkg_bundle_delete(first);  // what leaks is found at the end of the test
}

TEST(Package, KeepsItsFields) {
    const Name name("com.net");
    auto *package = oru_md_new_pkg_meta(name, "2.5", ORU_MD_PKG_LIBRARY);
    EXPECT_EQ(package->name, name.object);
    EXPECT_STREQ(package->version, "2.5");
    EXPECT_EQ(package->type, 1);
    EXPECT_EQ(package->mrs, nullptr);
    EXPECT_EQ(package->next, nullptr);
    oru_md_delete_pkg_meta(package);
    oru_md_delete_pkg_meta(nullptr);
    EXPECT_ASSERTION(oru_md_new_pkg_meta(nullptr, "1", 1), "pkg_name");
    EXPECT_ASSERTION(oru_md_new_pkg_meta(name, nullptr, 1), "version");
}

TEST(Package, RemovalGivesTheChainWithoutIt) {
    auto *a = new_package("a");
    auto *b = new_package("b");
    auto *c = new_package("c");
    a->next = b;
    b->next = c;
    EXPECT_EQ(oru_md_remove_pkg_meta(a, Name("none")), nullptr);
    EXPECT_EQ(oru_md_remove_pkg_meta(a, Name("b")), a);
    EXPECT_EQ(a->next, c);
    EXPECT_EQ(oru_md_remove_pkg_meta(a, Name("a")), c);
    EXPECT_EQ(oru_md_remove_pkg_meta(c, Name("c")), nullptr);
    EXPECT_ASSERTION(oru_md_remove_pkg_meta(nullptr, Name("a")), "first_pkg_meta");
    auto *d = new_package("d");
    EXPECT_ASSERTION(oru_md_remove_pkg_meta(d, nullptr), "pkg_name");
    oru_md_delete_pkg_meta(d);
}

TEST(Package, ChainsGrowAtTheirTails) {
    auto *package = new_package("p");
    auto *list = oru_do_prop_meta_list_new();
    ORUMdCodMeta *cods[4];
    ORUMdTypedefMeta *types[2];
    ORUMdMrMeta *mrs[2];
    for (int i = 0; i < 4; ++i)
        cods[i] = oru_md_cod_meta_new(package, Name("c"), nullptr, list, 1);
    for (int i = 0; i < 2; ++i) {
        oru_md_add_pkg_cd_meta(package, cods[i]);
        oru_md_add_pkg_od_meta(package, cods[i + 2]);
        oru_md_add_typedef_meta(package, types[i] = oru_md_new_typedef_meta("t"));
        oru_md_add_mr_meta(package, mrs[i] = new_mr(package, "m"));
    }
    oru_do_prop_meta_list_deref(list);
    EXPECT_EQ(package->cds, cods[0]);
    EXPECT_EQ(package->cds->next, cods[1]);
    EXPECT_EQ(package->ods, cods[2]);
    EXPECT_EQ(package->ods->next, cods[3]);
    EXPECT_EQ(package->typedefs, types[0]);
    EXPECT_EQ(package->typedefs->next, types[1]);
    EXPECT_EQ(package->mrs, mrs[0]);
    EXPECT_EQ(package->mrs->next, mrs[1]);
    oru_md_delete_pkg_meta(package);
}

TEST(Package, QualifiesNames) {
    auto *package = new_package("com.net");
    const Name plain("Port"), qualified("other/Port");
    auto *made = oru_md_qualified_name_new_or_ref(package, plain);
    auto *same = oru_md_qualified_name_new_or_ref(package, qualified);
    EXPECT_EQ(text(made), "com.net:1.0/Port");
    EXPECT_EQ(same, qualified.object);
    oru_do_name_deref(made);
    oru_do_name_deref(same);
    EXPECT_ASSERTION(oru_md_qualified_name_new_or_ref(nullptr, plain), "package");
    EXPECT_ASSERTION(oru_md_qualified_name_new_or_ref(package, nullptr), "name");
    oru_md_delete_pkg_meta(package);
}

TEST(Definition, KeepsItsFields) {
    auto *package = new_package("com.net");
    auto *list = oru_do_prop_meta_list_new();
    auto *cod = oru_md_cod_meta_new(package, Name("base"), "p/other", list, 1);
    oru_do_prop_meta_list_deref(list);
    EXPECT_EQ(cod->package, package);
    EXPECT_EQ(text(cod->name), "base");
    EXPECT_EQ(text(cod->extends_name), "p/other");
    EXPECT_EQ(cod->extends_cod, nullptr);
    EXPECT_EQ(cod->prop_list, list);
    EXPECT_EQ(cod->is_lib, 1);
    oru_md_cod_meta_delete(cod);
    oru_md_cod_meta_delete(nullptr);
    EXPECT_ASSERTION(oru_md_cod_meta_new(package, nullptr, nullptr, nullptr, 0), "cod_name");
    oru_md_delete_pkg_meta(package);
}

TEST(Resource, KeepsItsFields) {
    auto *package = new_package("com.net");
    auto *mr = new_mr(package, "Port", "lib/Port", "eth", 1);
    EXPECT_EQ(mr->package, package);
    EXPECT_EQ(text(mr->name), "Port");
    EXPECT_STREQ(oru_md_mr_meta_to_string(mr), "Port");
    EXPECT_EQ(text(mr->parent_name), "lib/Port");
    EXPECT_EQ(mr->parent_mr, nullptr);
    int32_t code = 0;
    EXPECT_STREQ(oru_do_value_get_string(oru_md_get_const_key(mr), &code), "eth");
    EXPECT_EQ(mr->is_lib, 1);
    EXPECT_EQ(oru_md_is_lib_mr(mr), 1);
    EXPECT_EQ(oru_md_is_impl_mr(mr), 0);
    oru_md_delete_mr_meta(mr);
    oru_md_delete_mr_meta(nullptr);
    auto *empty = new_mr(package, "Port", "", "");
    EXPECT_EQ(text(empty->parent_name), "");
    EXPECT_STREQ(oru_do_value_get_string(oru_md_get_const_key(empty), &code), "");
    oru_md_delete_mr_meta(empty);
    auto *plain = new_mr(package, "Slot");
    EXPECT_EQ(plain->parent_name, nullptr);
    EXPECT_EQ(oru_md_get_const_key(plain), nullptr);
    EXPECT_EQ(oru_md_get_const_key(nullptr), nullptr);
    EXPECT_EQ(oru_md_is_lib_mr(plain), 0);
    EXPECT_EQ(oru_md_is_impl_mr(plain), 1);
    oru_md_delete_mr_meta(plain);
    oru_md_delete_pkg_meta(package);
}

TEST(Resource, NullIsRefusedByName) {
    const Name name("a");
    auto *mr = new_mr(nullptr, "Port");
    EXPECT_ASSERTION(oru_md_new_mr_meta(nullptr, nullptr, mr->do_mr_meta, nullptr, nullptr, 0),
                     "mr_name");
    EXPECT_ASSERTION(oru_md_new_mr_meta(nullptr, name, nullptr, nullptr, nullptr, 0), "do_mr_meta");
    EXPECT_ASSERTION(oru_md_remove_mr_meta(nullptr, name), "first_mr_meta");
    EXPECT_ASSERTION(oru_md_remove_mr_meta(mr, nullptr), "mr_name");
    EXPECT_ASSERTION(oru_md_is_lib_mr(nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_is_impl_mr(nullptr), "mr_meta");
    oru_md_delete_mr_meta(mr);
}

TEST(Resource, ChainsGrowAtTheirTails) {
    auto *mr = new_mr(nullptr, "Port");
    auto *k1 = new_attr("k1"), *k2 = new_attr("k2"), *s1 = new_attr("s1"), *c1 = new_attr("c1");
    auto *c2 = new_attr("c2"), *o1 = new_attr("o1");
    auto *r1 = new_ref("r1", ORU_REF_CHILD), *r2 = new_ref("r2", ORU_REF_PEER);
    oru_md_add_key_meta(mr, k1, 1);
    oru_md_add_key_meta(mr, s1, 0);
    oru_md_add_key_meta(mr, k2, 7);
    oru_md_add_cd_meta(mr, c1);
    oru_md_add_cd_meta(mr, c2);
    oru_md_add_od_meta(mr, o1);
    oru_md_add_ref_meta(mr, r1);
    oru_md_add_ref_meta(mr, r2);
    EXPECT_EQ(mr->primary_keys, k1);
    EXPECT_EQ(k1->next, k2);
    EXPECT_EQ(mr->secondary_keys, s1);
    EXPECT_EQ(mr->cd_attrs, c1);
    EXPECT_EQ(c1->next, c2);
    EXPECT_EQ(mr->od_attrs, o1);
    EXPECT_EQ(mr->refs, r1);
    EXPECT_EQ(r1->next, r2);
    oru_md_delete_mr_meta(mr);
}

TEST(Resource, RemovalGivesTheChainWithoutIt) {
    auto *a = new_mr(nullptr, "a"), *b = new_mr(nullptr, "b");
    a->next = b;
    EXPECT_EQ(oru_md_remove_mr_meta(a, Name("c")), nullptr);
    EXPECT_EQ(oru_md_remove_mr_meta(a, Name("b")), a);
    EXPECT_EQ(a->next, nullptr);
    EXPECT_EQ(oru_md_remove_mr_meta(a, Name("a")), nullptr);
}

TEST(Resource, ImplementationsAreListedByThisVeryRecord) {
    TraceCapture traces;
    auto *library = new_mr(nullptr, "Port", nullptr, nullptr, 1);
    auto *one = new_mr(nullptr, "One"), *twin = new_mr(nullptr, "One");
    traces.clear();
    auto *entry = oru_md_mr_meta_add_impl_mr_meta(library, one);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{7, "adding subclass One to Port\n"}}));
    EXPECT_EQ(entry->mr, one);
    EXPECT_EQ(oru_md_mr_meta_get_impl_mr_meta_list(library), entry);
    EXPECT_EQ(oru_md_mr_meta_get_impl_mr_meta(library, one), one);
    EXPECT_EQ(oru_md_mr_meta_get_impl_mr_meta(library, twin), nullptr);
    oru_md_delete_mr_meta(library);
    oru_md_delete_mr_meta(one);
    oru_md_delete_mr_meta(twin);
}

TEST(ResourceList, GrowsFindsAndShrinks) {
    auto *a = new_mr(nullptr, "A", nullptr, "1"), *b = new_mr(nullptr, "B", nullptr, "2");
    auto *plain = new_mr(nullptr, "C");
    ORUMdMrMetaList *list = nullptr;
    EXPECT_EQ(oru_md_mr_meta_list_add(&list, plain), 1);
    EXPECT_EQ(oru_md_mr_meta_list_add(&list, a), 2);
    EXPECT_EQ(oru_md_mr_meta_list_add(&list, b), 3);
    EXPECT_EQ(oru_md_mr_meta_list_get_by_fq_name(list, Name("com.net:1.0/B")), b);
    EXPECT_EQ(oru_md_mr_meta_list_get_by_fq_name(list, Name("B")), nullptr);
    auto *two = oru_do_value_new_string("2"), *three = oru_do_value_new_string("3");
    EXPECT_EQ(oru_md_mr_meta_by_key(list, two), b);
    EXPECT_EQ(oru_md_mr_meta_by_key(list, three), nullptr);
    EXPECT_EQ(oru_md_mr_meta_by_key(nullptr, two), nullptr);
    EXPECT_EQ(oru_md_mr_meta_by_key(list, nullptr), nullptr);
    EXPECT_EQ(oru_md_mr_meta_list_get_by_fq_name(list, nullptr), nullptr);
    EXPECT_EQ(oru_md_mr_meta_list_remove_by_fq_name(&list, nullptr), nullptr);
    list->mr = nullptr;  // an entry without a resource is passed over
    EXPECT_EQ(oru_md_mr_meta_by_key(list, two), b);
    EXPECT_EQ(oru_md_mr_meta_list_get_by_fq_name(list, Name("com.net:1.0/A")), a);
    list->mr = plain;
    EXPECT_EQ(oru_md_mr_meta_list_remove_by_fq_name(&list, Name("com.net:1.0/A")), a);
    EXPECT_EQ(oru_md_mr_meta_list_remove_by_fq_name(&list, Name("com.net:1.0/A")), nullptr);
    EXPECT_EQ(oru_md_mr_meta_list_remove_by_fq_name(&list, Name("com.net:1.0/C")), plain);
    EXPECT_EQ(list->mr, b);
    EXPECT_EQ(list->next, nullptr);
    oru_md_mr_meta_list_delete_all_items(list);
    oru_md_mr_meta_list_delete_all_items(nullptr);
    oru_md_mr_meta_list_delete(oru_md_mr_meta_list_new(a));
    oru_md_mr_meta_list_delete(nullptr);
    EXPECT_ASSERTION(oru_md_mr_meta_list_new(nullptr), "md_mr_meta");
    oru_do_value_deref(two);
    oru_do_value_deref(three);
    for (auto *mr : {a, b, plain})
        oru_md_delete_mr_meta(mr);
}

TEST(Attribute, KeepsItsFields) {
    const Name name("cfg.mtu"), group("cfg");
    auto *prop = new_prop("cfg.mtu", ORU_PROP_CONFIG);
    auto *attr = oru_md_new_attr_meta(name, group, prop);
    oru_do_prop_meta_deref(prop);
    EXPECT_EQ(attr->name, name.object);
    EXPECT_EQ(attr->group_name, group.object);
    EXPECT_EQ(attr->prop_meta, prop);
    EXPECT_EQ(attr->typedef_meta, nullptr);
    EXPECT_EQ(oru_md_get_type_name(attr), nullptr);
    EXPECT_EQ(oru_md_get_type_name(nullptr), nullptr);
    auto *type = oru_md_new_typedef_meta("Mtu");
    attr->typedef_meta = type;
    EXPECT_STREQ(oru_md_get_type_name(attr), "Mtu");
    oru_do_name_deref(type->name);
    type->name = nullptr;
    EXPECT_EQ(oru_md_get_type_name(attr), nullptr);
    oru_md_delete_typedef_meta(type);
    EXPECT_ASSERTION(oru_md_new_attr_meta(nullptr, group, prop), "attr_name");
    EXPECT_ASSERTION(oru_md_new_attr_meta(name, group, nullptr), "do_prop_meta");
    oru_md_delete_attr_meta(attr);
    oru_md_delete_attr_meta(nullptr);
}

TEST(Attribute, IsFoundAndRemovedByName) {
    auto *a = new_attr("a"), *b = new_attr("b");
    a->next = b;
    EXPECT_EQ(oru_md_attr_meta_find(a, Name("b")), b);
    EXPECT_EQ(oru_md_attr_meta_find(a, Name("c")), nullptr);
    EXPECT_EQ(oru_md_attr_meta_find(nullptr, Name("c")), nullptr);
    EXPECT_EQ(oru_md_attr_meta_find(a, nullptr), nullptr);
    EXPECT_ASSERTION(oru_md_remove_attr_meta(nullptr, Name("a")), "first_attr_meta");
    EXPECT_ASSERTION(oru_md_remove_attr_meta(a, nullptr), "attr_name");
    EXPECT_EQ(oru_md_remove_attr_meta(a, Name("c")), nullptr);
    EXPECT_EQ(oru_md_remove_attr_meta(a, Name("a")), b);
    EXPECT_EQ(oru_md_remove_attr_meta(b, Name("b")), nullptr);
}

TEST(Reference, TakesTargetAndRoleFromItsProperty) {
    auto *child = new_ref("slots", ORU_REF_CHILD, "p/Slot");
    auto *peer = new_ref("link", ORU_REF_PEER, "p/Link");
    EXPECT_EQ(child->is_child, 1);
    EXPECT_EQ(text(child->target_name), "p/Slot");
    EXPECT_EQ(child->target_mr, nullptr);
    EXPECT_EQ(peer->is_child, 0);
    child->next = peer;
    EXPECT_EQ(oru_md_ref_meta_find(child, Name("link")), peer);
    EXPECT_EQ(oru_md_ref_meta_find(nullptr, Name("link")), nullptr);
    EXPECT_EQ(oru_md_ref_meta_find(child, nullptr), nullptr);
    EXPECT_ASSERTION(oru_md_remove_ref_meta(nullptr, Name("a")), "first_ref_meta");
    EXPECT_ASSERTION(oru_md_remove_ref_meta(child, nullptr), "ref_name");
    EXPECT_ASSERTION(oru_md_new_ref_meta(nullptr, peer->prop_meta), "ref_name");
    EXPECT_ASSERTION(oru_md_new_ref_meta(peer->name, nullptr), "do_prop_meta");
    EXPECT_EQ(oru_md_remove_ref_meta(child, Name("none")), nullptr);
    EXPECT_EQ(oru_md_remove_ref_meta(child, Name("slots")), peer);
    oru_md_delete_ref_meta(peer);
    oru_md_delete_ref_meta(nullptr);
}

TEST(Reference, ConstraintsAreThoseOfTheProperty) {
    auto *ref = new_ref("link", ORU_REF_PEER);
    auto *attr = new_attr("a");
    EXPECT_EQ(oru_md_has_ref_constraints(ref), 0);
    EXPECT_EQ(oru_md_get_ref_constraints(ref), nullptr);
    EXPECT_EQ(oru_md_has_attr_constraints(attr), 0);
    EXPECT_EQ(oru_md_get_attr_constraints(attr), nullptr);
    auto *list = oru_do_constraint_list_new();
    oru_do_prop_meta_set_constraint_list(ref->prop_meta, list);
    oru_do_prop_meta_set_constraint_list(attr->prop_meta, list);
    oru_do_constraint_list_deref(list);
    EXPECT_NE(oru_md_has_ref_constraints(ref), 0);
    EXPECT_EQ(oru_md_get_ref_constraints(ref), list);
    EXPECT_NE(oru_md_has_attr_constraints(attr), 0);
    EXPECT_EQ(oru_md_get_attr_constraints(attr), list);
    oru_md_delete_ref_meta(ref);
    oru_md_delete_attr_meta(attr);
}

TEST(Attribute, WithoutATypeNameStaysUnresolved) {
    auto *store = oru_md_map_new();
    auto *package = new_package("p");
    auto *mr = new_mr(package, "M");
    const Name name("a");
    auto *prop =
        oru_do_prop_meta_new(name, ORU_PROP_CONFIG, 0, 0, nullptr, -3, nullptr, 1, 0, 1, 0);
    oru_md_add_cd_meta(mr, oru_md_new_attr_meta(name, nullptr, prop));
    oru_do_prop_meta_deref(prop);
    oru_md_add_mr_meta(package, mr);
    store->bundles = oru_md_pkg_bundle_new("b", package);
    TraceCapture traces(3);
    EXPECT_EQ(store->oru_md_resolve_refs(store, ORU_MD_PKG_IMPL), 0);
    EXPECT_EQ(traces.at(3), std::vector<std::string>{"Failed to get type name for a\n"});
    oru_md_map_delete(store);
}

TEST(Type, StartsUnknownAndIsDescribedOnce) {
    auto *type = oru_md_new_typedef_meta("Speed");
    EXPECT_EQ(text(type->name), "Speed");
    EXPECT_EQ(type->typecode, -3);
    type->typecode = 6;
    auto *description = oru_md_get_do_typedef_meta(type);
    EXPECT_EQ(oru_do_typedef_meta_get_category(description), 1);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(description), 6);
    EXPECT_EQ(oru_do_typedef_meta_get_name(description), type->name);
    EXPECT_EQ(oru_md_get_do_typedef_meta(type), description);
    EXPECT_EQ(type->do_typedef_meta, description);
    oru_do_typedef_meta_ref(description);
    oru_md_delete_typedef_meta(type);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(description), 6);  // outlives the store's record
    oru_do_typedef_meta_deref(description);
    oru_md_delete_typedef_meta(nullptr);
    EXPECT_ASSERTION(oru_md_new_typedef_meta(nullptr), "type_name");
    EXPECT_ASSERTION(oru_md_get_do_typedef_meta(nullptr), "typedef_meta");
}

TEST(Type, EnumerationWithoutLabelsHasNoDescription) {
    auto *type = oru_md_new_typedef_meta("State");
    type->typecode = 103;
    EXPECT_EQ(oru_md_get_do_typedef_meta(type), nullptr);
    EXPECT_EQ(oru_md_get_do_typedef_meta(type), nullptr);
    type->enums = oru_do_nvlist_new();
    auto *description = oru_md_get_do_typedef_meta(type);
    EXPECT_EQ(oru_do_typedef_meta_get_enums(description), type->enums);
    oru_md_delete_typedef_meta(type);
}

TEST(Type, MemberThatNeverHasADescriptionIsLeftOut) {
    auto *labels = oru_md_new_typedef_meta("Labels");
    labels->typecode = 103;  // and no labels
    auto *type = oru_md_new_typedef_meta("Outer");
    type->typecode = 105;
    oru_md_add_complex_el_meta(type, "a", "int", 5);
    oru_md_add_complex_el_meta(type, "b", "Labels", -3)->typedef_meta = labels;
    oru_md_add_complex_el_meta(type, "c", "string", 8);
    auto *description = oru_md_get_do_typedef_meta(type);
    ASSERT_NE(description, nullptr);
    auto *members = oru_do_typedef_meta_get_sequence_members(description);
    ASSERT_EQ(oru_do_ntlist_get_len(members), 2);
    EXPECT_EQ(text(oru_do_ntlist_item_get_name(oru_do_ntlist_get_item(members, 1))), "c");
    oru_md_delete_typedef_meta(type);
    oru_md_delete_typedef_meta(labels);
}

TEST(Type, MemberThatCannotBeHadLeavesTheChainAsItIs) {
    oru::test::sweep_oom([] {
        auto *type = oru_md_new_typedef_meta("Outer");
        if (type == nullptr)
            return;
        auto *first = oru_md_add_complex_el_meta(type, "a", "int", 5);
        auto *second = oru_md_add_complex_el_meta(type, "b", "int", 5);
        EXPECT_TRUE((first != nullptr && second != nullptr) || oru::test::oom_hit());
        EXPECT_EQ(type->complex_els, first != nullptr ? first : second);
        if (first != nullptr) {
            EXPECT_EQ(first->next, second);
        }
        oru_md_delete_typedef_meta(type);
    });
}

TEST(Type, UnknownCodeIsDescribedAsASimpleType) {
    auto *type = oru_md_new_typedef_meta("Odd");
    auto *description = oru_md_get_do_typedef_meta(type);
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(oru_do_typedef_meta_get_category(description), 1);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(description), -3);
    oru_md_delete_typedef_meta(type);
}

TEST(Type, MembersAreDescribedInOrder) {
    for (const int32_t typecode : {104, 105}) {
        auto *inner = oru_md_new_typedef_meta("Inner");
        inner->typecode = 8;
        auto *type = oru_md_new_typedef_meta("Outer");
        type->typecode = typecode;
        auto *first = oru_md_add_complex_el_meta(type, "a", "int", 5);
        auto *second = oru_md_add_complex_el_meta(type, "b", "Inner", -3);
        EXPECT_EQ(type->complex_els, first);
        EXPECT_EQ(first->next, second);
        EXPECT_EQ(text(second->type_name), "Inner");
        second->typedef_meta = inner;
        auto *description = oru_md_get_do_typedef_meta(type);
        auto *members = typecode == 105 ? oru_do_typedef_meta_get_sequence_members(description)
                                        : oru_do_typedef_meta_get_choices(description);
        ASSERT_NE(members, nullptr);
        ASSERT_EQ(oru_do_ntlist_get_len(members), 2);
        auto *a = oru_do_ntlist_get_item(members, 0), *b = oru_do_ntlist_get_item(members, 1);
        EXPECT_EQ(text(oru_do_ntlist_item_get_name(a)), "a");
        EXPECT_EQ(oru_do_ntlist_item_get_type_code(a), 5);
        EXPECT_EQ(oru_do_ntlist_item_get_type_code(b), -3);
        EXPECT_EQ(oru_do_ntlist_item_get_typedef(b), inner->do_typedef_meta);
        oru_md_delete_typedef_meta(type);
        oru_md_delete_typedef_meta(inner);
    }
}

TEST(Type, CircleHasNoDescription) {
    auto *type = oru_md_new_typedef_meta("Loop");
    type->typecode = 105;
    oru_md_add_complex_el_meta(type, "again", "Loop", -3)->typedef_meta = type;
    EXPECT_EQ(oru_md_get_do_typedef_meta(type), nullptr);
    oru_md_delete_typedef_meta(type);
}

TEST(Store, NullIsRefusedByName) {
    auto *package = new_package("p");
    auto *mr = new_mr(package, "M");
    auto *type = oru_md_new_typedef_meta("T");
    EXPECT_ASSERTION(oru_md_add_mr_meta(nullptr, mr), "pkg_meta");
    EXPECT_ASSERTION(oru_md_add_mr_meta(package, nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_add_pkg_cd_meta(nullptr, nullptr), "pkg_meta");
    EXPECT_ASSERTION(oru_md_add_pkg_cd_meta(package, nullptr), "cd_meta");
    EXPECT_ASSERTION(oru_md_add_pkg_od_meta(nullptr, nullptr), "pkg_meta");
    EXPECT_ASSERTION(oru_md_add_pkg_od_meta(package, nullptr), "od_meta");
    EXPECT_ASSERTION(oru_md_add_typedef_meta(nullptr, type), "pkg_meta");
    EXPECT_ASSERTION(oru_md_add_typedef_meta(package, nullptr), "typedef_meta");
    EXPECT_ASSERTION(oru_md_add_key_meta(nullptr, nullptr, 1), "mr_meta");
    EXPECT_ASSERTION(oru_md_add_key_meta(mr, nullptr, 1), "key_meta");
    EXPECT_ASSERTION(oru_md_add_ref_meta(nullptr, nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_add_ref_meta(mr, nullptr), "ref_meta");
    EXPECT_ASSERTION(oru_md_add_cd_meta(nullptr, nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_add_cd_meta(mr, nullptr), "attr_meta");
    EXPECT_ASSERTION(oru_md_add_od_meta(nullptr, nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_add_od_meta(mr, nullptr), "attr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_to_string(nullptr), "mr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_add_impl_mr_meta(nullptr, mr), "lib_mr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_add_impl_mr_meta(mr, nullptr), "impl_mr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_get_impl_mr_meta(nullptr, mr), "lib_mr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_get_impl_mr_meta_list(nullptr), "lib_mr_meta");
    EXPECT_ASSERTION(oru_md_mr_meta_list_add(nullptr, mr), "head");
    EXPECT_ASSERTION(oru_md_mr_meta_list_remove_by_fq_name(nullptr, mr->name), "head");
    EXPECT_ASSERTION(oru_md_has_attr_constraints(nullptr), "attr_meta");
    EXPECT_ASSERTION(oru_md_get_attr_constraints(nullptr), "attr_meta");
    EXPECT_ASSERTION(oru_md_has_ref_constraints(nullptr), "ref_meta");
    EXPECT_ASSERTION(oru_md_get_ref_constraints(nullptr), "ref_meta");
    EXPECT_ASSERTION(oru_md_add_complex_el_meta(nullptr, "a", "int", 5), "typedef_meta");
    oru_md_delete_typedef_meta(type);
    oru_md_delete_mr_meta(mr);
    oru_md_delete_pkg_meta(package);
}

TEST(Store, RecordsWithoutMemoryLeaveNothingBehind) {
    oru::test::sweep_oom([] {
        auto *name = oru_do_name_new("a.name.too.long.to.be.kept.inside.of.its.record");
        if (name == nullptr)
            return;
        auto *package = oru_md_new_pkg_meta(name, "1.0", 1);
        auto *cod = oru_md_cod_meta_new(package, name, "x", nullptr, 0);
        auto *type = oru_md_new_typedef_meta("t");
        if (type != nullptr) {
            type->typecode = 105;
            oru_md_add_complex_el_meta(type, "a", "int", 5);
            auto *description = oru_md_get_do_typedef_meta(type);
            EXPECT_TRUE(description != nullptr || oru::test::oom_hit());
        }
        auto *description = oru_do_mr_meta_new(name, "1.0", name, 15, nullptr, nullptr);
        if (description != nullptr) {
            auto *mr = oru_md_new_mr_meta(package, name, description, "p/x", "key", 0);
            ORUMdMrMetaList *list = nullptr;
            if (mr != nullptr) {
                const int32_t length = oru_md_mr_meta_list_add(&list, mr);
                EXPECT_EQ(list != nullptr, length == 1);
            }
            oru_md_mr_meta_list_delete_all_items(list);
            oru_md_delete_mr_meta(mr);
        }
        oru_do_mr_meta_deref(description);
        oru_md_pkg_bundle_delete(oru_md_pkg_bundle_new("b", nullptr));
        oru_md_delete_typedef_meta(type);
        oru_md_cod_meta_delete(cod);
        oru_md_delete_pkg_meta(package);
        oru_do_name_deref(name);
    });
}

TEST(Store, WeakResolutionOfNamesOnlySaysSo) {
    TraceCapture traces;
    oru_md_resolve_name_refs();
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{
                  {7, "Invoking weak definition for ORU MD's resolve_name_refs function"}}));
}

}  // namespace
