#include "secrets.h"

#include <crypt.h>
#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "typed.h"

namespace embedded {

namespace {

static_assert(crypto_secretbox_KEYBYTES == 32);

[[noreturn]] void fail(const std::string &words) {
    throw StoreFault(StoreFault::Kind::denied, words);
}

void initialise_sodium() {
    if (sodium_init() < 0)
        fail("the library for sealing secrets does not start");
}

class File {
  public:
    File(const std::string &path, int flags)
        : handle_(::open(path.c_str(), flags | O_CLOEXEC, 0600)) {}
    ~File() {
        if (handle_ >= 0)
            close(handle_);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    explicit operator bool() const { return handle_ >= 0; }
    int get() const { return handle_; }

  private:
    int handle_;
};

std::string base64(std::string_view bytes) {
    std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(),
                      reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size(),
                      sodium_base64_VARIANT_ORIGINAL);
    text.pop_back();  // the zero behind it
    return text;
}

std::string from_base64(std::string_view text) {
    std::string bytes(text.size(), '\0');
    size_t size = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char *>(bytes.data()), bytes.size(),
                          text.data(), text.size(), nullptr, &size, nullptr,
                          sodium_base64_VARIANT_ORIGINAL) != 0)
        fail("a sealed secret is damaged");
    bytes.resize(size);
    return bytes;
}

const unsigned char *octets(std::string_view bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.data());
}

/* With the zeros that may be in it. */
std::string_view text_of(ORUDoValue *value) {
    int32_t status = 0;
    const char *const text = oru_do_value_get_string(value, &status);
    const int32_t length = oru_do_value_get_length(value);
    return text != nullptr && length > 0 ? std::string_view(text, static_cast<size_t>(length))
                                         : std::string_view();
}

Value text_value(const std::string &text) {
    return made_value(oru_do_value_new_string_l(text.c_str(), static_cast<int32_t>(text.size())));
}

}  // namespace

Vault::~Vault() {
    sodium_memzero(key_.data(), key_.size());
}

namespace {

/* Whether a name in the folder of a file would be there after a loss of power. */
bool is_on_disk(const std::string &path) {
    const size_t slash = path.rfind('/');
    const File folder(slash == std::string::npos ? "." : path.substr(0, slash + 1),
                      O_RDONLY | O_DIRECTORY);
    return folder && fsync(folder.get()) == 0;
}

bool write_key(const std::string &path, const unsigned char *key, size_t size) {
    unlink(path.c_str());  // of a process of that number that died on the way
    const File file(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
    return file && write(file.get(), key, size) == static_cast<ssize_t>(size) &&
           fsync(file.get()) == 0;
}

}  // namespace

/* Two processes may make the key at once: it is written under another name and linked, and the
   second one reads what the first has linked. */
void Vault::make_key() const {
    randombytes_buf(key_.data(), key_.size());
    const std::string made_as = key_file_ + "." + std::to_string(getpid());
    const bool is_there = write_key(made_as, key_.data(), key_.size()) &&
                          (::link(made_as.c_str(), key_file_.c_str()) == 0 || errno == EEXIST);
    unlink(made_as.c_str());
    if (!is_there || !is_on_disk(key_file_))
        fail("the key for secrets cannot be written: " + key_file_);
}

void Vault::read_key() const {
    const File file(key_file_, O_RDONLY | O_NOFOLLOW);
    struct stat state = {};
    if (!file || fstat(file.get(), &state) != 0 || state.st_size != static_cast<off_t>(kKeyBytes) ||
        read(file.get(), key_.data(), key_.size()) != static_cast<ssize_t>(key_.size()))
        fail("the key for secrets cannot be read: " + key_file_);
}

const Vault::Key &Vault::key(bool may_make) const {
    const std::lock_guard lock(mutex_);
    if (has_key_)
        return key_;
    initialise_sodium();
    if (key_file_.empty()) {
        randombytes_buf(key_.data(), key_.size());
    } else {
        if (may_make && access(key_file_.c_str(), F_OK) != 0)
            make_key();
        read_key();
    }
    has_key_ = true;
    return key_;
}

/* The nonce stands in front. */
std::string Vault::seal(std::string_view clear) const {
    const Key &with = key(true);
    std::string sealed(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + clear.size(),
                       '\0');
    auto *const nonce = reinterpret_cast<unsigned char *>(sealed.data());
    randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(nonce + crypto_secretbox_NONCEBYTES, octets(clear), clear.size(), nonce,
                          with.data());
    return base64(sealed);
}

std::string Vault::open(std::string_view text) const {
    // a new key opens nothing, and would stand in the way of the one that is missing
    const Key &with = key(false);
    const std::string sealed = from_base64(text);
    constexpr size_t kHead = crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
    if (sealed.size() < kHead)
        fail("a sealed secret is damaged");
    std::string clear(sealed.size() - kHead, '\0');
    if (crypto_secretbox_open_easy(reinterpret_cast<unsigned char *>(clear.data()),
                                   octets(sealed) + crypto_secretbox_NONCEBYTES,
                                   sealed.size() - crypto_secretbox_NONCEBYTES, octets(sealed),
                                   with.data()) != 0)
        fail("a sealed secret does not open with this key");
    return clear;
}

std::string Vault::hash(std::string_view password) {
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (password.size() >= CRYPT_MAX_PASSPHRASE_SIZE ||
        password.find('\0') != std::string_view::npos)
        throw SecretFault("a password has a zero in it, or more than " +
                          std::to_string(CRYPT_MAX_PASSPHRASE_SIZE - 1) + " bytes");
    const std::string clear(password);
    auto data = std::make_unique<crypt_data>();
    if (crypt_gensalt_rn("$y$", 0, nullptr, 0, setting, sizeof setting) == nullptr ||
        crypt_rn(clear.c_str(), setting, data.get(), sizeof *data) == nullptr)
        fail("a password cannot be hashed");
    return data->output;
}

Value VaultWriter::close(const Value &clear) const {
    return replace_secrets(clear, [&](ORUDoValue *secret, Secrecy secrecy) {
        const std::string_view text = text_of(secret);
        return text_value(secrecy == Secrecy::hashed ? Vault::hash(text) : vault_.seal(text));
    });
}

Value VaultReader::open(const Value &value) const {
    return replace_secrets(value, [&](ORUDoValue *secret, Secrecy secrecy) {
        if (!shows_)
            return text_value("<removed>");
        const std::string_view text = text_of(secret);
        return text_value(secrecy == Secrecy::hashed ? std::string(text) : vault_->open(text));
    });
}

}  // namespace embedded
