#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace qrv {

/// The memory through which a file of any size is read: 256 KiB, less for a small file. It is not
/// cleared, which would take longer than reading the thousands of small files of a command.
class CopyBuffer {
public:
    static constexpr std::size_t largest = 256UL * 1024;

    /// For a file that is expected to have that size. A small one fits with room to spare, so that
    /// one read tells that it has ended.
    explicit CopyBuffer(std::int64_t sizeBytes = largest)
        : size_(sizeBytes >= 0 && sizeBytes < std::int64_t{largest}
                    ? static_cast<std::size_t>(sizeBytes) + 1
                    : largest),
          bytes_(std::make_unique_for_overwrite<char[]>(size_)) {}

    std::span<char> span() { return {bytes_.get(), size_}; }
    std::span<const char> first(std::size_t count) const { return {bytes_.get(), count}; }
    std::size_t size() const { return size_; }

private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

}  // namespace qrv
