// What a store keeps of a bundle that is deleted: nothing. Who had a link to one of its records has
// a name to resolve again.
#include "md/forget.h"

#include "md/records.h"

namespace {

class Forgetting {
  public:
    explicit Forgetting(const ORUMdPkgBundle &bundle) : bundle_(bundle) {}

    void look_at(const ORUMdPkgMeta &package) const;

  private:
    bool owns(const ORUMdPkgMeta *package) const;
    bool owns(const ORUMdTypedefMeta *type) const;
    void look_at(ORUMdMrMeta &mr) const;
    void look_at(ORUMdAttrMeta *first) const;
    void look_at(ORUMdCodMeta *first) const;

    // A link to a record that tells its package.
    template <class Record>
    void clear(Record *&link) const {
        if (link != nullptr && owns(link->package))
            link = nullptr;
    }
    void clear(ORUMdTypedefMeta *&link) const {
        if (link != nullptr && owns(link))
            link = nullptr;
    }

    const ORUMdPkgBundle &bundle_;
};

bool Forgetting::owns(const ORUMdPkgMeta *package) const {
    return oru::find_record(bundle_.pkgs, [package](const ORUMdPkgMeta &each) {
               return &each == package;
           }) != nullptr;
}

bool Forgetting::owns(const ORUMdTypedefMeta *type) const {
    return oru::find_record(bundle_.pkgs, [type](const ORUMdPkgMeta &package) {
               return oru::find_record(package.typedefs, [type](const ORUMdTypedefMeta &each) {
                          return &each == type;
                      }) != nullptr;
           }) != nullptr;
}

void Forgetting::look_at(ORUMdAttrMeta *first) const {
    for (auto *attr = first; attr != nullptr; attr = attr->next)
        clear(attr->typedef_meta);
}

void Forgetting::look_at(ORUMdCodMeta *first) const {
    for (auto *cod = first; cod != nullptr; cod = cod->next)
        clear(cod->extends_cod);
}

void Forgetting::look_at(ORUMdMrMeta &mr) const {
    clear(mr.parent_mr);
    for (auto *ref = mr.refs; ref != nullptr; ref = ref->next)
        clear(ref->target_mr);
    for (auto *chain : {mr.primary_keys, mr.secondary_keys, mr.cd_attrs, mr.od_attrs})
        look_at(chain);
}

void Forgetting::look_at(const ORUMdPkgMeta &package) const {
    for (auto *mr = package.mrs; mr != nullptr; mr = mr->next)
        look_at(*mr);
    look_at(package.cds);
    look_at(package.ods);
    for (auto *type = package.typedefs; type != nullptr; type = type->next) {
        for (auto *member = type->complex_els; member != nullptr; member = member->next)
            clear(member->typedef_meta);
    }
}

}  // namespace

void oru::forget_bundle(ORUMdMap &store, ORUMdPkgBundle &bundle) {
    for (auto *package = bundle.pkgs; package != nullptr; package = package->next) {
        if (store.oru_md_get_pkg(&store, text_of(package->name), nullptr) == package)
            store.oru_md_remove_pkg(&store, package);
    }
    const Forgetting forgetting(bundle);
    for (auto *left = store.bundles; left != nullptr; left = left->next) {
        for (auto *package = left->pkgs; package != nullptr; package = package->next)
            forgetting.look_at(*package);
    }
}
