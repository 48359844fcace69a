#include "pr/where_item.h"

#include <cstring>

#include "oru/pr.h"

namespace oru::pr {

WhereWord::WhereWord(const char *item_name) : name_(duplicate(item_name)) {
    char *rest = nullptr;
    if (name_)
        word_ = strtok_r(name_.get(), " <=>", &rest);
}

bool WhereWord::is_unknown_to(ORUPrCrudxHandler *handler) const {
    if (!name_ || std::strcmp(text(), "OR") == 0 || std::strcmp(text(), "AND") == 0)
        return false;
    return oru_pr_crudx_handler_get_prop_get_cb(handler, text()) == nullptr;
}

}  // namespace oru::pr
