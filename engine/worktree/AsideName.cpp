#include <engine/worktree/AsideName.h>

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

}  // namespace qrv
