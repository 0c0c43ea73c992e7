#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/repository/StateDepth.h>
#include <platform/kernel/OdError.h>
#include <platform/ut/File.h>
#include <platform/ut/ReadEntireFile.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace qrv {

namespace {

constexpr std::size_t pieceBytes = 65536;

/// Ours are five levels deep.
constexpr int deepest = 100;

constexpr std::size_t tellingCount = 128;

/// Of each character of ASCII whether it is one of " [ \ ] { }.
constexpr std::array<bool, tellingCount> telling = [] {
    std::array<bool, tellingCount> table{};
    for (const std::size_t character : {0x22U, 0x5BU, 0x5CU, 0x5DU, 0x7BU, 0x7DU})
        table[character] = true;
    return table;
}();

bool isTelling(char32_t character) {
    return character < tellingCount && telling[character];
}

/// Follows a JSON text, given in parts, through its brackets. What is no JSON misleads it no
/// further than to a count of brackets.
class Depth {
public:
    /// What stands behind the document is not read.
    template <class Character>
    void follow(std::basic_string_view<Character> part) {
        for (std::size_t at = 0; at < part.size() && !isOver_; ++at) {
            // Nearly all characters say nothing, and there are millions.
            while (!isEscaped_ && at < part.size() && !isTelling(static_cast<char32_t>(part[at])))
                ++at;
            if (at < part.size())
                follow(static_cast<char32_t>(part[at]));
        }
    }

    bool isTooDeep() const { return isTooDeep_; }

private:
    void follow(char32_t character) {
        if (isInString_) {
            if (isEscaped_)
                isEscaped_ = false;
            else if (character == U'\\')
                isEscaped_ = true;
            else if (character == U'"')
                isInString_ = false;
        } else if (character == U'"') {
            isInString_ = true;
        } else if (character == U'[' || character == U'{') {
            isTooDeep_ |= ++depth_ > deepest;
        } else if (character == U']' || character == U'}') {
            isOver_ = --depth_ <= 0;
        }
    }

    int depth_ = 0;
    bool isInString_ = false;
    bool isEscaped_ = false;
    bool isTooDeep_ = false;
    bool isOver_ = false;
};

bool isUtf16(std::string_view bytes) {
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

bool isTooDeep(const OdString& path) {
    ut::File file;
    if (!file.open(path))
        return false;
    Depth depth;
    std::array<char, pieceBytes> buffer{};
    bool isFirst = true;
    while (const std::size_t count = file.read(buffer.data(), buffer.size())) {
        const std::string_view bytes(buffer.data(), count);
        if (isFirst && isUtf16(bytes)) {
            depth.follow(std::wstring_view(ut::readEntireFile(path).toWide()));
            break;
        }
        depth.follow(bytes);
        isFirst = false;
    }
    return depth.isTooDeep();
}

}  // namespace

Expected<void> checkStateDepth(const common::RootPath& root) try {
    if (!isTooDeep(root.statePath()))
        return {};
    return ErrorMessage{OdString::format(
        tr(L"The state file '%ls' has more than %i levels of brackets, and is not read"),
        printable(root.statePath()), deepest)};
} catch (const OdError&) {
    return {};
}

}  // namespace qrv
