// Constraints in packages: `assert` elements and `constraint` attributes.
#include "frame/trace.h"
#include "md/reader.h"
#include "oru/md_lookup.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::Ref;

// The text of an element's first child node; null without.
class ElementText {
  public:
    explicit ElementText(const xmlNode *element) : text_(content_of(element->children)) {}
    ElementText(const ElementText &) = delete;
    ElementText &operator=(const ElementText &) = delete;
    ~ElementText() { xmlFree(gathered_); }
    const char *text() const { return reinterpret_cast<const char *>(text_); }

  private:
    // Only that of an element has to be gathered.
    const xmlChar *content_of(const xmlNode *node) {
        if (node == nullptr || node->type != XML_ELEMENT_NODE)
            return node != nullptr ? node->content : nullptr;
        return gathered_ = xmlNodeGetContent(node);
    }

    xmlChar *gathered_ = nullptr;
    const xmlChar *text_;
};

// Constraints are read with the type of their element, and anew where that is resolved later.
struct Target {
    int32_t typecode;
    Ref<ORUDoConstraintList> &list;
};

int32_t add_constraint(const Target &target, ORUDoCondition *condition, const char *text) {
    const auto constraint = Ref<ORUDoConstraint>::adopt(
        oru_do_constraint_new_t(condition, text, target.typecode, oru_md_get_enum_value_by_name));
    if (!constraint) {
        ORU_TRACE(Level::failure, "oru_do_constraint creation failed.\n");
        return ORU_RC_MALLOC;
    }
    auto &list = target.list;
    if (!list)
        list = Ref<ORUDoConstraintList>::adopt(oru_do_constraint_list_new());
    if (!list || oru_do_constraint_list_add(list.get(), constraint.get()) < 0)
        return ORU_RC_MALLOC;
    return ORU_OK;
}

// One `assert`: the first `constraint` in it, guarded by the first `condition` in front of that.
int32_t read_assert(const xmlNode *element, const Target &target) {
    Ref<ORUDoCondition> condition;
    for (const xmlNode *child : oru::XmlChildren(element)) {
        const bool is_constraint = oru::xml_is(child, "constraint");
        if (!is_constraint && (condition || !oru::xml_is(child, "condition")))
            continue;
        const ElementText content(child);
        if (content.text() == nullptr)
            continue;
        if (is_constraint)
            return add_constraint(target, condition.get(), content.text());
        condition = Ref<ORUDoCondition>::adopt(oru_do_condition_new(content.text()));
        if (!condition) {
            ORU_TRACE(Level::failure, "oru_do_condition creation failed.\n");
            return ORU_RC_MALLOC;
        }
    }
    return ORU_OK;
}

}  // namespace

int32_t oru::read_assertions(const PackageReader &reader, const xmlNode *element, int32_t typecode,
                             Ref<ORUDoConstraintList> &list) {
    const Target target{typecode, list};
    for (const xmlNode *child : XmlChildren(element)) {
        if (!xml_is(child, "assert"))
            continue;
        const ElementPlace place(reader, child);
        if (const int32_t code = read_assert(child, target); code != ORU_OK)
            return code;
    }
    const XmlAttribute constraint(element, "constraint");
    return constraint ? add_constraint(target, nullptr, constraint.text()) : ORU_OK;
}

void oru::read_prop_assertions(const PackageReader &reader, const xmlNode *element,
                               ORUDoPropMeta *prop) {
    if (element->children == nullptr)
        return;
    Ref<ORUDoConstraintList> list;
    const int32_t code = read_assertions(reader, element, prop->typecode, list);
    if (code != ORU_OK) {
        ORU_TRACE(Level::failure, "Error %d while parsing assert element", static_cast<int>(code));
    } else if (list) {
        oru_do_prop_meta_set_constraint_list(prop, list.get());
    }
}
