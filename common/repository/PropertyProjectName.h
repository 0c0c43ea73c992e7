#pragma once

#include <common/base/Export.h>
#include <common/repository/RootPath.h>

#include <QString>

namespace common {

/// The project's display name, kept in the text file "project_name" of the properties folder, as
/// UTF-8.
class QRV_COMMON_EXPORT PropertyProjectName {
public:
    /// Only composes the file's path; does not touch the disk.
    PropertyProjectName(const RootPath& root);

    /// The whole file, so the name and the line break that `setName` writes after it: who wants the
    /// bare name trims it. Empty when the file cannot be opened.
    QString getName() const;
    /// Replaces the file by the name and a line feed. False when it cannot be opened, for example
    /// because the properties folder is missing; a failure after that is not noticed.
    bool setName(const QString& name) const;

private:
    QString filePath_;
};

}  // namespace common
