#pragma once

#include <platform/kernel/OdString.h>

#include <string_view>

namespace ut {

/// Replaces the file `path` by `bytes`, atomically and durably. The steps, and what a crash behind
/// each leaves: a new file with a name of its own in the same folder, filled and flushed to the
/// disk (the old file and, with a name that ends in ".qrv-tmp", the new one); renamed over the old
/// file (either, whole); the folder flushed (the new file).
///
/// A new file has the permissions of the old one, also while it is being written. A symbolic link
/// at the path is replaced, not followed. False, and nothing changed, when something other than a
/// regular file or a link stands there or a step fails; only when the flush of the folder failed,
/// the new file stays in place.
bool replaceFile(const OdString& path, std::string_view bytes);

}  // namespace ut
