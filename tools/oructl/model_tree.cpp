#include <cstdio>
#include <set>

#include "model_print.h"
#include "model_roots.h"
#include "model_words.h"
#include "terminal_text.h"

namespace oructl {
namespace {

// A line below a resource: a reference to a child, or one of the implementations.
struct Branch {
    std::string label;
    ORUMdMrMeta *mr;
};

std::string keys_of(const ORUMdMrMeta &mr) {
    std::vector<std::string> names;
    for (const ORUMdAttrMeta &key : records(mr.primary_keys))
        names.push_back(text_of(key.name));
    return names.empty() ? "" : "[" + joined(names) + "]";
}

std::vector<Branch> branches_of(const ORUMdMrMeta &mr) {
    std::vector<Branch> branches;
    for (const ORUMdMrMetaList &entry : records(mr.impl_mr_metas))
        branches.push_back({"= " + qualified_name(*entry.mr), entry.mr});
    for (const ORUMdRefMeta &ref : records(mr.refs)) {
        if (ref.is_child == 0 || ref.target_mr == nullptr)
            continue;
        const bool many = oru_do_prop_meta_get_multiplicity(ref.prop_meta) == ORU_MULTIPLICITY_MANY;
        branches.push_back({text_of(ref.name) + (many ? keys_of(*ref.target_mr) : "") + "  " +
                                qualified_name(*ref.target_mr),
                            ref.target_mr});
    }
    return branches;
}

// A type is drawn in full where it comes first, so that the drawing is no longer than the model.
class Drawing {
  public:
    explicit Drawing(int32_t depth) : depth_(depth) {}

    void draw(ORUMdMrMeta *root) {
        put("%s\n", qualified_name(*root).c_str());
        draw_below(root, "", 1);
    }

  private:
    void draw_below(ORUMdMrMeta *mr, const std::string &indent, int32_t level) {
        drawn_.insert(mr);
        const auto branches = branches_of(*mr);
        for (size_t i = 0; i < branches.size(); ++i)
            draw_branch(branches[i], indent, i + 1 == branches.size(), level);
    }

    void draw_branch(const Branch &branch, const std::string &indent, bool last, int32_t level) {
        const bool has_more = !branches_of(*branch.mr).empty();
        const bool goes_on = has_more && drawn_.count(branch.mr) == 0 && level != depth_;
        put("%s%s %s%s\n", indent.c_str(), last ? "└──" : "├──", branch.label.c_str(),
            has_more && !goes_on ? "  ..." : "");
        if (goes_on)
            draw_below(branch.mr, indent + (last ? "    " : "│   "), level + 1);
    }

    int32_t depth_;
    std::set<const ORUMdMrMeta *> drawn_;
};

}  // namespace

bool print_tree(const Model &model, const std::string &root, int32_t depth) {
    const std::vector<ORUMdMrMeta *> roots =
        root.empty() ? find_roots(model) : model.find_resources(root);
    Drawing drawing(depth);
    for (ORUMdMrMeta *mr : roots)
        drawing.draw(mr);
    if (roots.empty() && root.empty())
        tell("every resource is held by another: name one with --root");
    else if (roots.empty())
        tell(root + ": there is no resource of that name");
    return !roots.empty();
}

}  // namespace oructl
