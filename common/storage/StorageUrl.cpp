#include <common/base/MessageInternal.h>
#include <common/storage/StorageUrl.h>
#include <platform/ut/FileName.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace common {

namespace {

constexpr int digestLength = 64;

bool isObjectUrl(const OdString& url) {
    return url.left(2) == OdString(L"po");
}

bool isDrawingUrl(const OdString& url) {
    return url.left(2) == repositoryExt();
}

// The parts of a drawing URL are defined as matches of the expressions ".*#(.*)" and "tf:(.*?)#.*",
// in which "." stands for anything but a line feed and a carriage return. They are computed
// directly, because matching recurses once for each character and the length of a URL is in the
// server's hand.
bool hasLineBreak(const std::string& urlNarrow) {
    return urlNarrow.find_first_of("\n\r") != std::string::npos;
}

OdString join(const OdString& folder, const OdString& name) {
    return folder + ut::FileName::getPathSeparator() + name;
}

}  // namespace

FileStorage::Type urlToType(const OdString& url) {
    return isDrawingUrl(url) ? FileStorage::Drawing : FileStorage::Plain;
}

FileStorage::Type fileToType(const OdString& file) {
    OdString extension = ut::FileName(file).getExt();
    return extension.makeLower() == OdString(L"dwg") ? FileStorage::Drawing : FileStorage::Plain;
}

Expected<OdString> getRevision(const OdString& url) {
    if (isObjectUrl(url))
        return url.right(digestLength);
    // The narrow form shows where it differs: a unit that is no text comes back as its bytes.
    const std::string urlNarrow = url.toNarrow();
    const std::size_t lastHash = urlNarrow.rfind('#');
    if (!isDrawingUrl(url) || lastHash == std::string::npos || hasLineBreak(urlNarrow))
        return translatedError(L"Internal error, invalid url occurred: %ls", url);
    return OdString::fromNarrow(std::string_view(urlNarrow).substr(lastHash + 1));
}

Expected<OdString> getStoragePath(const RootPath& root, const OdString& url) {
    if (isObjectUrl(url))
        return join(join(root.qrvPath(), L"objects"), url.right(digestLength));
    const std::string urlNarrow = url.toNarrow();
    const std::string prefix = (repositoryExt() + L':').toNarrow();
    const std::size_t firstHash = urlNarrow.find('#', prefix.size());
    if (!urlNarrow.starts_with(prefix) || firstHash == std::string::npos || hasLineBreak(urlNarrow))
        return translatedError(L"invalid url: %ls", url);
    const OdString store = OdString::fromNarrow(
        std::string_view(urlNarrow).substr(prefix.size(), firstHash - prefix.size()));
    ut::FileName file(join(root.qrvPath(), repositoryExt()), store, L"tf");
    file.makeAbsolute();
    return file.getFullPath();
}

}  // namespace common
