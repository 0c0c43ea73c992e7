#include <common/base/MessageInternal.h>
#include <common/storage/StorageUrl.h>
#include <platform/ut/FileName.h>

namespace common {

namespace {

constexpr int digestLength = 64;
constexpr int notFound = -1;

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
bool hasLineBreak(const OdString& url) {
    return url.find(L'\n') != notFound || url.find(L'\r') != notFound;
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
    const int lastHash = url.reverseFind(L'#');
    if (!isDrawingUrl(url) || lastHash == notFound || hasLineBreak(url))
        return translatedError(L"Internal error, invalid url occurred: %ls", url);
    return url.mid(lastHash + 1);
}

Expected<OdString> getStoragePath(const RootPath& root, const OdString& url) {
    if (isObjectUrl(url))
        return join(join(root.qrvPath(), L"objects"), url.right(digestLength));
    const OdString prefix = repositoryExt() + L':';
    const int firstHash = url.find(L'#', prefix.getLength());
    if (url.left(prefix.getLength()) != prefix || firstHash == notFound || hasLineBreak(url))
        return translatedError(L"invalid url: %ls", url);
    const OdString store = url.mid(prefix.getLength(), firstHash - prefix.getLength());
    ut::FileName file(join(root.qrvPath(), repositoryExt()), store, L"tf");
    file.makeAbsolute();
    return file.getFullPath();
}

}  // namespace common
