#pragma once

#include <engine/storage/VersionReader.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>

namespace qrv_test {

/// Bytes that do not compress, always the same for a seed.
inline std::string randomBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// The revision `number` of some contents: each differs from the one before it in a few bytes.
inline std::string revision(unsigned number, std::size_t size = 4000) {
    std::string bytes = randomBytes(size, 1);
    for (unsigned change = 1; change <= number; ++change)
        bytes.replace((change * 37) % (size - 8), 8, randomBytes(8, 1000 + change));
    return bytes;
}

/// Gives bytes from memory; with `failsAt`, an error when it comes there.
class MemoryReader : public qrv::VersionReader {
public:
    explicit MemoryReader(std::string bytes, std::optional<std::size_t> failsAt = std::nullopt)
        : bytes_(std::move(bytes)), failsAt_(failsAt) {}

    Expected<std::size_t> read(std::span<char> buffer) override {
        const std::size_t count = std::min(buffer.size(), bytes_.size() - position_);
        if (failsAt_ && position_ + count >= *failsAt_)
            return ErrorMessage{L"The disk is broken"};
        bytes_.copy(buffer.data(), count, position_);
        position_ += count;
        return count;
    }
    std::int64_t sizeBytes() const override { return static_cast<std::int64_t>(bytes_.size()); }

private:
    std::string bytes_;
    std::optional<std::size_t> failsAt_;
    std::size_t position_ = 0;
};

/// All that a reader gives, through a buffer of that size, or its error behind "error: ".
inline std::string readAll(qrv::VersionReader& reader, std::size_t bufferBytes = 1000) {
    std::string all;
    std::string buffer(bufferBytes, '\0');
    for (std::size_t count = bufferBytes; count == bufferBytes;) {
        const Expected<std::size_t> read = reader.read(buffer);
        if (!read)
            return "error: " + read.error().message.toNarrow();
        count = *read;
        all.append(buffer, 0, count);
    }
    return all;
}

/// The text with every `part` in it replaced.
inline std::string replaced(std::string text, const std::string& part, const std::string& by) {
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + by.size()))
        text.replace(at, part.size(), by);
    return text;
}

}  // namespace qrv_test
