#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <common/storage/FileStorage.h>
#include <platform/kernel/OdString.h>

namespace common {

// A storage URL names one stored version of a file. "tf:" name "#" revision is a revision in the
// drawing store `name`; "po", one character that nobody looks at and a digest is an object. URLs
// come from the server: any text gets its answer in time linear in its length.

/// `Drawing` when the URL begins with "tf", otherwise `Plain`, also for what is no URL.
QRV_COMMON_EXPORT FileStorage::Type urlToType(const OdString& url);
/// `Drawing` for a file with the extension "dwg" in any letter case, otherwise `Plain`.
QRV_COMMON_EXPORT FileStorage::Type fileToType(const OdString& file);

/// The revision: what follows the last "#" of a drawing URL, or the last 64 characters of an object
/// URL. Fails with a message that names the URL when it is neither; a drawing URL with a line break
/// is neither.
QRV_COMMON_EXPORT Expected<OdString> getRevision(const OdString& url);
/// Where the version lives: the object's file, or the file of the drawing store, whose name ends at
/// the first "#"; the latter's path is absolute. Fails with a message that names the URL when it is
/// neither. Nothing checks that the file exists, or what the name holds.
QRV_COMMON_EXPORT Expected<OdString> getStoragePath(const RootPath& root, const OdString& url);

}  // namespace common
