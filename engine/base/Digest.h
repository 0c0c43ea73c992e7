#pragma once

#include <platform/kernel/OdString.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace qrv {

/// A SHA-256 digest of bytes that come piece by piece.
class Digest {
public:
    Digest();
    Digest(Digest&&) noexcept;
    Digest& operator=(Digest&&) noexcept;
    ~Digest();

    void add(std::span<const char> bytes);
    /// 64 lower-case hexadecimal digits. Nothing may be added afterwards.
    std::string finish();

    static std::string of(std::string_view bytes);

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace qrv
