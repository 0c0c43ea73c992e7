#include <cli/shell/CompiledCatalogue.h>

#include <cstdint>
#include <optional>

namespace qrv::cli {

namespace {

constexpr std::size_t headerSize = 28;
constexpr std::size_t entrySize = 8;
constexpr std::uint32_t magicNumber = 0x950412DE;

/// The number at a position that lies inside the bytes with all of its four.
std::uint32_t numberAt(std::string_view bytes, std::size_t position) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[position + i]);
    return number;
}

/// One of the two tables: for each text its length and its position.
class Table {
public:
    Table(std::string_view bytes, std::size_t position, std::size_t count)
        : bytes_(bytes), position_(position), count_(count) {}

    /// No sum of two 32-bit numbers wraps in the 64 bits they are added in.
    bool isInside() const {
        static_assert(sizeof(std::size_t) >= sizeof(std::uint64_t));
        return position_ % 4 == 0 && position_ >= headerSize &&
               position_ + entrySize * count_ <= bytes_.size();
    }

    /// The text of an entry, which a NUL must follow. None when it is not inside the bytes.
    std::optional<std::string_view> text(std::size_t index) const {
        const std::size_t length = numberAt(bytes_, position_ + entrySize * index);
        const std::size_t begin = numberAt(bytes_, position_ + entrySize * index + 4);
        if (begin + length >= bytes_.size() || bytes_[begin + length] != '\0')
            return std::nullopt;
        return bytes_.substr(begin, length);
    }

    bool areTextsInside() const {
        for (std::size_t index = 0; index < count_; ++index) {
            if (!text(index))
                return false;
        }
        return true;
    }

private:
    std::string_view bytes_;
    std::size_t position_;
    std::size_t count_;
};

}  // namespace

bool isCompiledCatalogue(std::string_view bytes) {
    constexpr std::uint32_t revision = 0;
    if (bytes.size() < headerSize || numberAt(bytes, 0) != magicNumber ||
        numberAt(bytes, 4) != revision)
        return false;
    const std::size_t count = numberAt(bytes, 8);
    const Table sources(bytes, numberAt(bytes, 12), count);
    const Table translations(bytes, numberAt(bytes, 16), count);
    if (count == 0 || !sources.isInside() || !translations.isInside())
        return false;
    if (!sources.areTextsInside() || !translations.areTextsInside())
        return false;
    // The translation of the empty text says how the others are encoded.
    return sources.text(0)->empty() &&
           translations.text(0)->find("charset=UTF-8\n") != std::string_view::npos;
}

}  // namespace qrv::cli
