#include "model_roots.h"

#include <set>

namespace oructl {
namespace {

// What a reference to a child leads to: the resource, and what implements it.
void hold_targets(const ORUMdMrMeta &mr, std::set<const ORUMdMrMeta *> &held) {
    for (const ORUMdRefMeta &ref : records(mr.refs)) {
        if (ref.is_child == 0 || ref.target_mr == nullptr)
            continue;
        held.insert(ref.target_mr);
        for (const ORUMdMrMetaList &entry : records(ref.target_mr->impl_mr_metas))
            held.insert(entry.mr);
    }
}

}  // namespace

std::vector<ORUMdMrMeta *> find_roots(const Model &model) {
    std::set<const ORUMdMrMeta *> held;
    std::vector<ORUMdMrMeta *> roots;
    for (const ORUMdPkgMeta *package : model.packages()) {
        for (ORUMdMrMeta &mr : records(package->mrs)) {
            hold_targets(mr, held);
            if (mr.is_lib == 0)
                roots.push_back(&mr);
        }
    }
    std::erase_if(roots, [&](const ORUMdMrMeta *mr) { return held.count(mr) != 0; });
    return roots;
}

}  // namespace oructl
