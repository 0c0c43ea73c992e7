#include <common/base/MessageInternal.h>
#include <common/repository/RootPath.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>
#include <platform/ut/Paths.h>

#ifdef _WIN32
#include <windows.h>
#endif

namespace common {

namespace {

OdString joined(const OdString& folder, const wchar_t* name) {
    return folder + ut::FileName::getPathSeparator() + name;
}

/// On Windows the folder shows up unless it is marked. Elsewhere its leading dot hides it.
void hide([[maybe_unused]] const OdString& folder) {
#ifdef _WIN32
    SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_HIDDEN);
#endif
}

/// A path made only of separators keeps one, so that it still names the same folder.
OdString withoutTrailingSeparators(const OdString& path) {
    int length = path.getLength();
    while (length > 1 && ut::FileName::isPathSeparator(path[length - 1]))
        --length;
    return path.left(length);
}

}  // namespace

RootPath::RootPath(const OdString& path, bool isNew)
    : path_(ut::correctSlashes(withoutTrailingSeparators(path))), isNew_(isNew) {
}

Expected<RootPath> RootPath::get(const OdString& path, bool create) {
    const OdString metadataFolder = qrvPath(path);
    if (ut::Dir::exists(metadataFolder))
        return RootPath(path, false);
    if (!create)
        return translatedError(L"Path: %ls is not a qrv directory.", path);
    if (!ut::FileName::mkdir(path, 0777, true))
        return translatedError(L"Not able to create the version control folder: %ls", path);
    if (!ut::Dir::create(metadataFolder))
        return translatedError(L"Not able to create a qrv directory in %ls", path);
    hide(metadataFolder);
    return RootPath(path, true);
}

OdString RootPath::qrvPath(const OdString& root) {
    return joined(root, L".qrv");
}

OdString RootPath::statePath() const {
    return joined(qrvPath(), L"qrv.state");
}

OdString RootPath::dbPath() const {
    return joined(qrvPath(), L"qrv.db");
}

OdString RootPath::propertiesPath() const {
    return joined(qrvPath(), L"properties");
}

OdString RootPath::logPath() const {
    return joined(qrvPath(), L"qrv.log");
}

OdString RootPath::pathTo(const OdString& relative) const {
    return path_ + ut::FileName::getPathSeparator() + relative;
}

Expected<OdString> RootPath::relativePathTo(const OdString& path) const {
    const OdString prefix = path_ + ut::FileName::getPathSeparator();
    if (path.left(prefix.getLength()) != prefix)
        return translatedError(L"%ls is not located in the current repository", path);
    return path.mid(prefix.getLength());
}

OdString repositoryExt() {
    return L"tf";
}

}  // namespace common
