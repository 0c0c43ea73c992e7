#include <cli/Message.h>
#include <cli/ProjectName.h>
#include <cli/Translation.h>
#include <common/repository/PropertyProjectName.h>
#include <platform/qut/toQt.h>

#include <QString>
#include <filesystem>
#include <system_error>

namespace qrv_cli {

namespace fs = std::filesystem;

std::string refusalOfName(const std::string& name) {
    const OdString text = OdString::fromNarrow(name);
    // Blanks alone would be read back as no name.
    if (qut::toQt(text).trimmed().isEmpty())
        return trUtf8(L"A project's name cannot be empty");
    if (!(printable(text) == text))
        return trUtf8(L"A project's name must be one line of plain text");
    return {};
}

Expected<void> setProjectName(const std::string& name, const common::RootPath& root) {
    const OdString folder = root.propertiesPath();
    const fs::path file = fs::path(folder.toNarrow()) / "project_name";
    std::error_code error;
    // The file's size, since the writing of the name notices no failure after the file is open.
    if (common::PropertyProjectName(root).setName(qut::toQt(OdString::fromNarrow(name))) &&
        fs::file_size(file, error) == name.size() + 1)
        return {};
    return ErrorMessage{OdString::format(
        tr(L"The project's name cannot be written to the folder '%ls'"), printable(folder))};
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

}  // namespace qrv_cli
