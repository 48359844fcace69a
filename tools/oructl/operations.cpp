#include "operations.h"

#include <oruembedded.h>

namespace oructl {

void Change::create(const Address &address, const std::string &type, ORUDoProperties *props) {
    add(ORU_EMBEDDED_OP_CREATE, address.parent, props, shared_name(address.reference),
        shared_name(type));
}

void Change::set(const Address &address, ORUDoProperties *props) {
    add(ORU_EMBEDDED_OP_SET, address.path, props, nullptr, nullptr);
}

void Change::remove(const Address &address) {
    add(ORU_EMBEDDED_OP_DELETE, address.path, nullptr, nullptr, nullptr);
}

ORUDoName *Change::shared_name(const std::string &name) {
    if (name.empty())
        return nullptr;
    const auto [at, is_new] = names_.try_emplace(name);
    if (is_new)
        at->second = made<Name>(oru_do_name_new(name.c_str()));
    return at->second.get();
}

void Change::add(int32_t code, const std::string &address, ORUDoProperties *props,
                 ORUDoName *reference, ORUDoName *type) {
    if (last_uri_ == nullptr || address != last_address_) {
        last_uri_ = made<Uri>(oru_do_uri_new(address.c_str()));
        last_address_ = address;
    }
    constexpr size_t kFew = 64;
    if (parts_.empty() || parts_.back().size >= kFew)
        parts_.push_back({made<Operations>(oru_do_config_ops_new()), 0});
    Part &part = parts_.back();
    if (oru_do_config_ops_add(part.operations.get(), code, last_uri_.get(), props, reference, type,
                              nullptr) == 0)
        throw std::bad_alloc();
    ++size_;
    if (++part.size < kFew)
        return;
    while (parts_.size() > 1 && parts_.back().size == parts_[parts_.size() - 2].size)
        join_last_two();
}

void Change::join_last_two() {
    const Part last = std::move(parts_.back());
    parts_.pop_back();
    oru_do_config_ops_add_ops(parts_.back().operations.get(), last.operations.get());
    parts_.back().size += last.size;
}

ORUDoConfigOps *Change::get() {
    if (parts_.empty())
        parts_.push_back({made<Operations>(oru_do_config_ops_new()), 0});
    while (parts_.size() > 1)
        join_last_two();
    ORUDoConfigOps *const all = parts_.front().operations.get();
    // what finds no memory is left out without a word
    if (static_cast<size_t>(oru_do_config_ops_get_len(all)) != size_)
        throw std::bad_alloc();
    return all;
}

}  // namespace oructl
