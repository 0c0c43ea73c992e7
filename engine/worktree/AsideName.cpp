#include <engine/worktree/AsideName.h>
#include <sys/TemporaryName.h>

#include <charconv>
#include <system_error>

namespace qrv {

namespace {

constexpr std::string_view ending = ".qrv-aside";

}  // namespace

std::string asideName(std::size_t position, int attempt) {
    return "." + std::to_string(position) + "-" + std::to_string(attempt) + std::string(ending);
}

bool isAsideName(std::string_view name) {
    return positionOfAside(name).has_value();
}

std::optional<std::size_t> positionOfAside(std::string_view name) {
    if (!name.starts_with('.') || !name.ends_with(ending))
        return std::nullopt;
    std::size_t position = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data() + 1, end, position);
    if (error != std::errc() || rest == end || *rest != '-')
        return std::nullopt;
    return position;
}

bool isOurOwn(const OdString& path) {
    const std::wstring& units = path.toWide();
    const std::size_t begin = units.rfind(L'/') + 1;  // 0 without a slash
    if (begin == units.size() || units[begin] != L'.')
        return false;
    const std::string name = OdString(units.substr(begin)).toNarrow();
    return sys::isTemporaryName(name) || isAsideName(name);
}

}  // namespace qrv
