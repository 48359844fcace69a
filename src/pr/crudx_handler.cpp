#include "frame/require.h"
#include "frame/trace.h"
#include "oru/pr.h"
#include "oru/rc.h"
#include "oru/uri.h"
#include "oruplatform/hash.h"
#include "pr/records.h"

struct ORUPrCrudxHandlerPriv {
    void *owner;
    int32_t in_use;  // set at creation, nothing reads it
    void *prop_get;
    void *prop_set;
    void *action;
};

namespace {

using oru::Level;
using oru::pr::make_zeroed;

ORUErrorIfc *owner_of(ORUPrCrudxHandler *ifc) {
    ORU_REQUIRE(ifc);
    return static_cast<ORUErrorIfc *>(ifc->priv->owner);
}

int32_t leave_item(void *) {
    return 0;
}

void close_table(void *table) {
    if (table != nullptr)
        hashCloseWithFunction(table, leave_item);
}

// A table that could not be made holds nothing, and nothing can be added to it.
bool add_callback(void *table, const char *name, ORUPrCallback callback) {
    if (table != nullptr && hashAdd(table, name, reinterpret_cast<void *>(callback)) == 0)
        return true;
    ORU_TRACE(Level::failure, "Unable to allocate memory");
    return false;
}

using Table = void *ORUPrCrudxHandlerPriv::*;

ORUPrCallback find_callback(ORUPrCrudxHandler *handler, Table table, const char *name) {
    if (handler == nullptr || handler->priv == nullptr || handler->priv->*table == nullptr)
        return nullptr;
    return reinterpret_cast<ORUPrCallback>(hashFind(handler->priv->*table, name));
}

}  // namespace

ORUPrCallback oru_pr_invoke_action_fn = nullptr;

ORUPrCrudxHandler *oru_pr_crudx_handler_new(void *owner) {
    auto *handler = make_zeroed<ORUPrCrudxHandler>();
    auto *priv = handler != nullptr ? make_zeroed<ORUPrCrudxHandlerPriv>() : nullptr;
    if (priv == nullptr) {
        ORU_TRACE(Level::failure, "Unable to allocate memory");
        oru_pr_crudx_handler_delete(handler);
        return nullptr;
    }
    handler->priv = priv;
    handler->get_ifc = owner_of;
    priv->owner = owner;
    priv->in_use = 1;

    priv->prop_get = hashMake(0);
    if (priv->prop_get == nullptr) {
        ORU_TRACE(Level::failure, "Unable to create hashmap");
        oru_pr_crudx_handler_delete(handler);
        return nullptr;
    }
    // Callers rely on a handler that reads properties even when these two cannot be had.
    priv->prop_set = hashMake(0);
    priv->action = hashMake(0);
    ORU_TRACE(Level::detail, "Done");
    return handler;
}

void oru_pr_crudx_handler_delete(ORUPrCrudxHandler *handler) {
    if (handler == nullptr)
        return;
    if (ORUPrCrudxHandlerPriv *priv = handler->priv) {
        close_table(priv->prop_get);
        close_table(priv->prop_set);
        close_table(priv->action);
        ph_free_named(priv);
    }
    ph_free_named(handler);
}

int32_t oru_pr_crudx_handler_add_prop_cb(ORUPrCrudxHandler *handler, const char *name,
                                         ORUPrCallback get_cb, ORUPrCallback set_cb) {
    if (handler == nullptr || handler->priv == nullptr)
        return ORU_OK;
    bool added = true;
    if (get_cb != nullptr)
        added = add_callback(handler->priv->prop_get, name, get_cb);
    if (set_cb != nullptr)
        added = add_callback(handler->priv->prop_set, name, set_cb) && added;
    return added ? ORU_OK : ORU_RC_MALLOC;
}

int32_t oru_pr_crudx_handler_add_action_cb(ORUPrCrudxHandler *handler, const char *name,
                                           ORUPrCallback cb) {
    if (handler == nullptr || handler->priv == nullptr)
        return ORU_OK;
    return add_callback(handler->priv->action, name, cb) ? ORU_OK : ORU_RC_MALLOC;
}

ORUPrCallback oru_pr_crudx_handler_get_prop_get_cb(ORUPrCrudxHandler *handler, const char *name) {
    return find_callback(handler, &ORUPrCrudxHandlerPriv::prop_get, name);
}

ORUPrCallback oru_pr_crudx_handler_get_prop_set_cb(ORUPrCrudxHandler *handler, const char *name) {
    return find_callback(handler, &ORUPrCrudxHandlerPriv::prop_set, name);
}

ORUPrCallback oru_pr_crudx_handler_get_action_cb(ORUPrCrudxHandler *handler, const char *name) {
    return find_callback(handler, &ORUPrCrudxHandlerPriv::action, name);
}

int32_t oru_pr_add_crudx_handler(ORUPrInstanceCtx *inst, intptr_t a, intptr_t b, intptr_t c,
                                 intptr_t d) {
    ORU_REQUIRE(inst);
    auto *entry = make_zeroed<ORUPrInstanceEntry>();
    if (entry == nullptr) {
        ORU_TRACE(Level::failure, "Unable to allocate memory");
        return ORU_RC_MALLOC;
    }
    *entry = {{a, b, c, d}, inst->entries};
    inst->entries = entry;
    return ORU_OK;
}

ORUDoUri *oru_pr_get_parent_uri(ORUDoUri *uri) {
    return oru_do_uri_get_parent_uri(uri);
}
