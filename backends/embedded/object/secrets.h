/*
 * Secrets at rest. Passwords are only ever compared, and are kept as salted hashes (yescrypt). What
 * has to be read back is sealed with a key in a file of its own, readable by its owner alone.
 */
#ifndef EMBEDDED_SECRETS_H
#define EMBEDDED_SECRETS_H

#include <array>
#include <mutex>

#include "writes.h"

namespace embedded {

/* Seals and opens. The key is read when it is first needed, and made when something is sealed
   without one. */
class Vault {
  public:
    /* An empty path: a key that lives as long as the vault. */
    explicit Vault(std::string key_file) : key_file_(std::move(key_file)) {}
    ~Vault();
    Vault(const Vault &) = delete;
    Vault &operator=(const Vault &) = delete;

    std::string seal(std::string_view clear) const;
    std::string open(std::string_view sealed) const;

    static std::string hash(std::string_view password);

  private:
    static constexpr size_t kKeyBytes = 32;
    using Key = std::array<unsigned char, kKeyBytes>;

    const Key &key(bool may_make) const;
    void make_key() const;
    void read_key() const;

    std::string key_file_;
    mutable std::mutex mutex_;
    mutable bool has_key_ = false;
    mutable Key key_ = {};
};

class VaultWriter final : public SecretWriter {
  public:
    explicit VaultWriter(const Vault &vault) : vault_(vault) {}
    Value close(const Value &clear) const override;

  private:
    const Vault &vault_;
};

/* Puts "<removed>" in the place of secrets, unless they are to be shown. */
class VaultReader final : public SecretReader {
  public:
    VaultReader(std::shared_ptr<const Vault> vault, bool shows)
        : vault_(std::move(vault)), shows_(shows) {}
    Value open(const Value &value) const override;

  private:
    std::shared_ptr<const Vault> vault_;
    bool shows_;
};

}  // namespace embedded

#endif
