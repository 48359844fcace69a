#include "load_later.h"

#include "database.h"

namespace oructl {

Later::Later(const std::vector<LoadedResource> &resources, size_t batch) : batch_(batch) {
    if (batch == 0)
        return;
    places_.reserve(resources.size());
    for (size_t i = 0; i < resources.size(); ++i)
        places_.emplace(resources[i].address.path, i);
}

bool Later::has_to_wait(const std::string &address, size_t end) const try {
    const auto at = places_.find(read_address(address).path);
    return at != places_.end() && at->second >= end;
} catch (const Failure &) {
    return false;  // the commit tells what is wrong with it
}

bool Later::has_to_wait(ORUDoValue *value, size_t end) const {
    int32_t status = ORU_OK;
    if (value == nullptr)
        return false;
    if (oru_do_value_is_array(value) != 0) {
        EachValue each(oru_do_value_get_array(value, &status));
        ORUDoValue *element = each();
        while (element != nullptr && !has_to_wait(element, end))
            element = each();
        return element != nullptr;
    }
    if (ORUDoUri *uri = oru_do_value_get_uri(value))
        return has_to_wait(oru_do_uri_get_uri_str(uri), end);
    if (oru_do_value_get_type(value) == ORU_DO_TYPE_STRING)
        return has_to_wait(oru_do_value_get_string(value, &status), end);
    return false;
}

void Later::take(const ORUMdMrMeta &mr, const LoadedResource &resource, size_t place) {
    if (batch_ == 0)
        return;
    const size_t end = (place / batch_ + 1) * batch_;
    ORUDoProperties *const props = resource.props.get();
    Properties waiting;
    for (const ORUMdRefMeta &ref : records(mr.refs)) {
        const char *const name = oru_do_name_get_strname(ref.name);
        ORUDoValue *const value = oru_do_properties_get_value(props, name);
        if (!has_to_wait(value, end))
            continue;
        if (!waiting)
            waiting = made<Properties>(oru_do_properties_new());
        oru_do_properties_set_value(waiting.get(), name, value);
        oru_do_properties_remove_by_name(props, name);
    }
    if (waiting)
        taken_.push_back({resource.address, std::move(waiting)});
}

}  // namespace oructl
