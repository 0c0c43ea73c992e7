#include <engine/base/Digest.h>
#include <engine/base/Hex.h>

#include <openssl/sha.h>

#include <array>

namespace qrv {

// The plain calls, which cannot fail. The general interface for all digests would first set up the
// whole of its library, with a configuration file that the environment may name: a third of what a
// short command takes.
struct Digest::Context {
    SHA256_CTX state;
};

Digest::Digest() : context_(std::make_unique<Context>()) {
    SHA256_Init(&context_->state);
}

Digest::Digest(Digest&&) noexcept = default;
Digest& Digest::operator=(Digest&&) noexcept = default;
Digest::~Digest() = default;

void Digest::add(std::span<const char> bytes) {
    SHA256_Update(&context_->state, bytes.data(), bytes.size());
}

std::string Digest::finish() {
    std::array<char, digestLength / 2> digest = {};
    SHA256_Final(reinterpret_cast<unsigned char*>(digest.data()), &context_->state);
    return toHex({digest.data(), digest.size()});
}

std::string Digest::of(std::string_view bytes) {
    Digest digest;
    digest.add(bytes);
    return digest.finish();
}

}  // namespace qrv
