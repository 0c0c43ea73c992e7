#include <engine/diff/Lines.h>

#include <algorithm>

namespace qrv {

namespace {

constexpr std::size_t bytesSearchedForNul = 8000;

}  // namespace

Lines::Lines(std::string_view text) : text_(text), begins_{0} {
    for (std::size_t end = 0; end < text.size();) {
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
        begins_.push_back(static_cast<std::uint32_t>(end));
    }
}

bool isText(std::string_view bytes) {
    return bytes.substr(0, bytesSearchedForNul).find('\0') == std::string_view::npos;
}

}  // namespace qrv
