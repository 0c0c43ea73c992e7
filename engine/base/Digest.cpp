#include <engine/base/Digest.h>
#include <engine/base/Hex.h>

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <new>

namespace qrv {

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

// Looked up once: with the constant that needs no look-up, each new digest makes its own.
const EVP_MD* sha256() {
    static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return algorithm;
}

// Of these steps none fails for another reason than a lack of memory.
void require(int result) {
    if (result != 1)
        throw std::bad_alloc();
}

}  // namespace

struct Digest::Context {
    std::unique_ptr<EVP_MD_CTX, FreeContext> state{EVP_MD_CTX_new()};
};

Digest::Digest() : context_(std::make_unique<Context>()) {
    require(context_->state != nullptr ? 1 : 0);
    require(EVP_DigestInit_ex2(context_->state.get(), sha256(), nullptr));
}

Digest::Digest(Digest&&) noexcept = default;
Digest& Digest::operator=(Digest&&) noexcept = default;
Digest::~Digest() = default;

void Digest::add(std::span<const char> bytes) {
    require(EVP_DigestUpdate(context_->state.get(), bytes.data(), bytes.size()));
}

std::string Digest::finish() {
    std::array<char, digestLength / 2> digest = {};
    auto* const bytes = reinterpret_cast<unsigned char*>(digest.data());
    require(EVP_DigestFinal_ex(context_->state.get(), bytes, nullptr));
    return toHex({digest.data(), digest.size()});
}

std::string Digest::of(std::string_view bytes) {
    Digest digest;
    digest.add(bytes);
    return digest.finish();
}

}  // namespace qrv
