#pragma once

#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

/// The SHA-256 digest of the first `length` bytes at `data`, as 64 lower-case hexadecimal digits; a
/// negative length counts as 0. Stands at global scope, where its callers look for it.
QRV_COMMON_EXPORT OdString generateSha(const char* data, int length);

/// The digest of the beginning of the text's narrow form: as many bytes as the text has units. For
/// ASCII this is the whole text.
QRV_COMMON_EXPORT OdString generateSha(const OdString& text);

namespace common {

/// Whether the file at `relativePath` differs from the content that `url` names by its digest,
/// which stands behind the first three characters. Always true for the URL of a drawing ("tf"),
/// without reading anything. Reports no errors: a file that cannot be opened counts as an empty
/// one. Needs the same small amount of memory for a file of any size.
QRV_COMMON_EXPORT bool isDifferent(const OdString& relativePath, const OdString& url,
                                   const RootPath& root);

}  // namespace common
