#include "operations.h"

#include <oruembedded.h>

namespace oructl {

void Change::create(const Address &address, const std::string &type, ORUDoProperties *props) {
    add(ORU_EMBEDDED_OP_CREATE, address.parent, props, address.reference, type);
}

void Change::set(const Address &address, ORUDoProperties *props) {
    add(ORU_EMBEDDED_OP_SET, address.path, props, "", "");
}

void Change::remove(const Address &address) {
    add(ORU_EMBEDDED_OP_DELETE, address.path, nullptr, "", "");
}

void Change::add(int32_t code, const std::string &address, ORUDoProperties *props,
                 const std::string &reference, const std::string &type) {
    const auto uri = made<Uri>(oru_do_uri_new(address.c_str()));
    const Name reference_name(reference.empty() ? nullptr : oru_do_name_new(reference.c_str()));
    const Name type_name(type.empty() ? nullptr : oru_do_name_new(type.c_str()));
    if (oru_do_config_ops_add(recent_.get(), code, uri.get(), props, reference_name.get(),
                              type_name.get(), nullptr) == 0)
        throw std::bad_alloc();
    constexpr size_t kFew = 512;
    if (++size_ % kFew == 0)
        flush();
}

void Change::flush() {
    oru_do_config_ops_add_ops(operations_.get(), recent_.get());
    recent_ = made<Operations>(oru_do_config_ops_new());
}

ORUDoConfigOps *Change::get() {
    flush();
    // what finds no memory is left out without a word
    if (static_cast<size_t>(oru_do_config_ops_get_len(operations_.get())) != size_)
        throw std::bad_alloc();
    return operations_.get();
}

}  // namespace oructl
