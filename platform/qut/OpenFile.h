#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <QFile>

namespace qut {

/// Opens `file` at `path`, which must name no folder and, unless it is for writing, something. What
/// Qt would wait for is refused: a pipe that nobody reads is not opened for writing. The path is
/// converted as everywhere in the platform, so that a name which is not valid UTF-8 is reached too
/// and one that holds a NUL is refused, where Qt would cut it. The mode means what it means to
/// `QFile::open`: writing makes a missing file, and `WriteOnly` without `Append` empties an
/// existing one. False, and `file` as it was, when it cannot be opened or was open before.
QRV_PLATFORM_EXPORT bool openFile(QFile& file, const OdString& path, QIODevice::OpenMode mode);

}  // namespace qut
