#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/paths/MetadataNameInternal.h>
#include <engine/paths/RelativePath.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace qrv {

namespace {

constexpr std::size_t longestComponent = 255;
constexpr std::size_t longestPath = 4000;

const wchar_t* refusalOfComponent(std::string_view name) {
    if (name.empty())
        return translatable(L"it has an empty component");
    if (name.size() > longestComponent)
        return translatable(L"a name in it is too long");
    if (name.find_first_not_of(". ") == std::string_view::npos)
        return translatable(L"it has a component of dots or blanks only");
    if (couldBeMetadataFolder(name))
        return translatable(L"it could lead into the repository's own folder");
    return nullptr;
}

const wchar_t* refusalOfComponents(std::string_view path) {
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (const wchar_t* refusal = refusalOfComponent(path.substr(begin, end - begin)))
            return refusal;
        begin = end + 1;
    }
    return nullptr;
}

bool isBelowProperties(std::string_view path) {
    constexpr std::string_view folder = layout::propertiesFolder;
    return path.starts_with(folder) && path.substr(folder.size()).starts_with('/');
}

// The folder holds no folders, so one name follows.
std::string_view withoutPropertiesFolder(std::string_view path) {
    constexpr std::size_t begin = std::string_view(layout::propertiesFolder).size() + 1;
    const bool isProperty =
        isBelowProperties(path) && path.find('/', begin) == std::string_view::npos;
    return isProperty ? path.substr(begin) : path;
}

}  // namespace

RelativePath::RelativePath(OdString text) : text_(std::move(text)) {
}

Expected<RelativePath> RelativePath::check(const OdString& path) {
    const std::string bytes = path.toNarrow();
    const wchar_t* refusal = refusalOfPath(bytes);
    if (refusal == nullptr && !(OdString::fromNarrow(bytes) == path))
        refusal = translatable(L"it has a character that no name has");
    if (refusal != nullptr)
        return ErrorMessage{OdString::format(tr(L"'%ls' cannot be used as a path: %ls"),
                                             printable(path), tr(refusal))};
    return RelativePath(path);
}

Expected<RelativePath> RelativePath::checkBytes(std::string_view path) {
    OdString text = OdString::fromNarrow(path);
    // Bytes are read as a text that has these bytes.
    if (refusalOfPath(path) == nullptr)
        return RelativePath(std::move(text));
    return check(text);
}

bool RelativePath::isProperties() const {
    return isBelowProperties(bytes());
}

const wchar_t* refusalOfPath(std::string_view path) {
    if (path.empty())
        return translatable(L"it is empty");
    if (path.size() > longestPath)
        return translatable(L"it is too long");
    if (path.find('\0') != std::string_view::npos)
        return translatable(L"it has a NUL in it");
    if (path.front() == '/')
        return translatable(L"it is not relative");
    if (path.find('\\') != std::string_view::npos)
        return translatable(L"it has a backslash in it");
    if (path.find(':') != std::string_view::npos)
        return translatable(L"it has a colon in it");
    return refusalOfComponents(withoutPropertiesFolder(path));
}

}  // namespace qrv
