#include <platform/ut/FileTextInternal.h>
#include <platform/ut/RegularFileInternal.h>
#include <sys/TransferInternal.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace ut {

namespace {

constexpr std::string_view markUtf8 = "\xEF\xBB\xBF";
constexpr std::string_view markUtf16Little = "\xFF\xFE";
constexpr std::string_view markUtf16Big = "\xFE\xFF";
constexpr wchar_t replacement = 0xFFFD;

// No text is longer in any of the encodings: three bytes of UTF-8 for each unit, and the mark.
constexpr std::int64_t largestFileBytes =
    3 * std::int64_t{std::numeric_limits<std::int32_t>::max()} + 3;

OdString decodeUtf16(std::string_view bytes, std::size_t highByte) {
    std::wstring units;
    units.reserve(bytes.size() / 2 + 1);
    std::size_t position = 0;
    for (; position + 1 < bytes.size(); position += 2) {
        const auto high = static_cast<unsigned char>(bytes[position + highByte]);
        const auto low = static_cast<unsigned char>(bytes[position + 1 - highByte]);
        units.push_back(static_cast<wchar_t>(high << 8 | low));
    }
    if (position < bytes.size())
        units.push_back(replacement);
    return OdString(std::move(units));
}

/// The contents of a file, in a buffer that is not zeroed before it is filled: clearing a large one
/// costs as much as decoding it.
class Contents {
public:
    /// Reads to the file's end, also when the file has grown or shrunk since its size was asked.
    /// Gives the cause of a failure, or 0.
    int readAll(const OpenedFile& file) {
        // One byte more than expected, so that the read which fills the buffer also meets the end.
        enlarge(static_cast<std::size_t>(file.sizeBytes) + 1);
        for (;;) {
            const sys::ReadBytes piece =
                sys::readUpTo(file.handle.number(), {buffer_.get() + size_, capacity_ - size_});
            size_ += piece.count;
            if (piece.error || size_ < capacity_)
                return piece.error.value();
            if (size_ > static_cast<std::size_t>(largestFileBytes))
                return EFBIG;
            enlarge(std::max<std::size_t>(2 * capacity_, 4096));
        }
    }

    std::string_view bytes() const { return {buffer_.get(), size_}; }

private:
    void enlarge(std::size_t capacity) {
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(buffer_.get(), size_, larger.get());
        buffer_ = std::move(larger);
        capacity_ = capacity;
    }

    std::unique_ptr<char[]> buffer_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace

OdString decodeText(std::string_view bytes) {
    if (bytes.starts_with(markUtf16Little))
        return decodeUtf16(bytes.substr(markUtf16Little.size()), 1);
    if (bytes.starts_with(markUtf16Big))
        return decodeUtf16(bytes.substr(markUtf16Big.size()), 0);
    if (bytes.starts_with(markUtf8))
        bytes.remove_prefix(markUtf8.size());
    return OdString::fromNarrow(bytes);
}

FileText readFileText(const OdString& path) {
    const OpenedFile file = openRegularFile(path, O_RDONLY);
    if (!file.handle.isOpen())
        return {.text = {}, .errorNumber = file.errorNumber};
    // Asked before any memory is: a file with holes may claim to be larger than the disk.
    if (file.sizeBytes > largestFileBytes)
        return {.text = {}, .errorNumber = EFBIG};
    Contents contents;
    if (const int errorNumber = contents.readAll(file); errorNumber != 0)
        return {.text = {}, .errorNumber = errorNumber};
    try {
        return {.text = decodeText(contents.bytes())};
    } catch (const std::length_error&) {
        return {.text = {}, .errorNumber = EFBIG};
    }
}

}  // namespace ut
