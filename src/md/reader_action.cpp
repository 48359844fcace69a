// Actions of resources in packages.
#include "frame/trace.h"
#include "md/act_meta.h"
#include "md/reader.h"
#include "oru/name.h"
#include "oru/rc.h"

namespace {

using oru::Level;
using oru::Ref;

struct Parameters {
    Ref<ORUDoPropMetaList> in;
    Ref<ORUDoPropMetaList> out;
    Ref<ORUDoPropMetaList> err;

    // The list that an element belongs to, or null.
    Ref<ORUDoPropMetaList> *of(const xmlNode *element) {
        if (oru::xml_is(element, "inputParameter"))
            return &in;
        if (oru::xml_is(element, "outputParameter"))
            return &out;
        return oru::xml_is(element, "errorParameter") ? &err : nullptr;
    }
};

bool add_parameter(const xmlNode *element, Ref<ORUDoPropMetaList> &list) {
    const auto param = oru::read_property(element, ORU_PROP_PARAM, nullptr, false);
    if (!param) {
        ORU_TRACE(Level::failure, "Error instantiating oru_do_prop_meta\n");
        return false;
    }
    if (!list)
        list = Ref<ORUDoPropMetaList>::adopt(oru_do_prop_meta_list_new());
    if (!list) {
        ORU_TRACE(Level::failure, "Failed to allocate list of arguments\n");
        return false;
    }
    if (oru_do_prop_meta_list_add(list.get(), param.get()) < 0) {
        ORU_TRACE(Level::failure, "Failed to add to arg list\n");
        return false;
    }
    return true;
}

// Null for a faulty action.
Ref<ORUDoActMeta> read_one(const oru::PackageReader &reader, const xmlNode *element) {
    const oru::XmlAttribute name(element, "name");
    if (!name) {
        ORU_TRACE(Level::failure, "Unable to parse action name\n");
        return {};
    }
    Parameters parameters;
    for (const xmlNode *child : oru::XmlChildren(element)) {
        const oru::ElementPlace place(reader, child);
        auto *list = parameters.of(child);
        if (list != nullptr && !add_parameter(child, *list))
            return {};
    }
    const auto act_name = Ref<ORUDoName>::adopt(oru_do_name_new(name.text()));
    if (!act_name)
        return {};
    return Ref<ORUDoActMeta>::adopt(oru_do_act_meta_new(
        act_name.get(), parameters.in.get(), parameters.out.get(), parameters.err.get()));
}

}  // namespace

int32_t oru::read_action(const PackageReader &reader, const xmlNode *element,
                         Ref<ORUDoActMetaList> &actions) {
    const auto action = read_one(reader, element);
    if (!action) {
        ORU_TRACE(Level::failure, "Error processing action node\n");
        return ORU_RC_METADATA;
    }
    if (!actions)
        actions = Ref<ORUDoActMetaList>::adopt(oru_do_act_meta_list_new());
    if (!actions) {
        ORU_TRACE(Level::failure, "Failed to allocate action list\n");
        return ORU_RC_MALLOC;
    }
    if (oru_do_act_meta_list_add(actions.get(), action.get()) < 0) {
        ORU_TRACE(Level::failure, "Failed to add to action list\n");
        return ORU_RC_SYSCALL;
    }
    return ORU_OK;
}
