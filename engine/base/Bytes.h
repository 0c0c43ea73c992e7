#pragma once

#include <common/base/Expected.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace qrv {

/// Memory for the contents of one file. What was not written yet is undefined: filling it first
/// would cost as much as reading it from the disk.
class Bytes {
public:
    Bytes() = default;
    /// Fails when the process cannot have that much memory.
    static Expected<Bytes> ofSize(std::int64_t size);

    std::span<char> span() { return {bytes_.get(), size_}; }
    std::span<const char> span() const { return {bytes_.get(), size_}; }
    std::string_view view() const { return {bytes_.get(), size_}; }
    std::int64_t size() const { return static_cast<std::int64_t>(size_); }
    /// Forgets what lies behind the first `size` bytes; there must be as many.
    void cutTo(std::size_t size) { size_ = size; }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

}  // namespace qrv
