// Types whose values are secrets. The model tells them by the beginning of their names.
#ifndef ORU_TOOLS_ORUCTL_SECRETS_H
#define ORU_TOOLS_ORUCTL_SECRETS_H

#include <string_view>

namespace oructl {

// From the least to the most: a hash is never turned back.
enum class Secret { none, sealed, hashed };

inline Secret secrecy_of_type(std::string_view name) {
    if (name.starts_with("PasswordString"))
        return Secret::hashed;
    return name.starts_with("EncryptedString") ? Secret::sealed : Secret::none;
}

}  // namespace oructl

#endif
