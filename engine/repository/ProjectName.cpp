#include <common/repository/PropertyProjectName.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/ProjectName.h>
#include <engine/repository/SharedMode.h>
#include <platform/qut/toQt.h>

#include <QString>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace qrv {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t newFilePermissions = 0666;

std::error_code replaceName(const std::string& text, const sys::Folder& folder) {
    sys::Outcome<sys::NewFile> file = folder.newFile(layout::projectNamePath, newFilePermissions);
    if (!file)
        return file.error();
    const sys::Outcome<sys::FileStatus> old = folder.status(layout::projectNamePath);
    std::error_code error =
        old ? file->takeRights(old->owner, old->group, old->permissions) : std::error_code();
    if (!error)
        error = file->write(text);
    if (!error)
        error = file->flush();
    if (!error)
        error = file->publish(sys::NewFile::Existing::replace);
    return error ? error : folder.flush(layout::propertiesFolder);
}

}  // namespace

std::string refusalOfName(const std::string& name) {
    const OdString text = OdString::fromNarrow(name);
    // Blanks alone would be read back as no name.
    if (qut::toQt(text).trimmed().isEmpty())
        return trUtf8(L"A project's name cannot be empty");
    if (!(printable(text) == text))
        return trUtf8(L"A project's name must be one line of plain text");
    return {};
}

// Not by the library, which empties the file before it writes: without room on the disk the old
// name would be lost.
Expected<void> setProjectName(const std::string& name, const common::RootPath& root,
                              const sys::Folder& folder, const Caller& caller) {
    const SharedMode shared(folder, caller);
    if (const std::error_code error = replaceName(name + '\n', folder))
        return systemFailure(tr(L"'%ls' cannot be written: %ls"),
                             root.pathTo(OdString(layout::projectNamePath)), error);
    return {};
}

OdString projectName(const common::RootPath& root) {
    const QString name = common::PropertyProjectName(root).getName().trimmed();
    const ushort* const units = name.utf16();
    return OdString(std::wstring(units, units + name.size()));
}

OdString displayName(const common::RootPath& root) {
    OdString name = projectName(root);
    if (!name.isEmpty())
        return name;
    const fs::path folder = fs::path(root.path().toNarrow()).lexically_normal();
    // The top folder of all has no name but its path.
    return OdString::fromNarrow((folder.has_filename() ? folder.filename() : folder).native());
}

}  // namespace qrv
