#pragma once

#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <string>

namespace qrv {

/// What two names have in common that some file system takes for one: they differ in letter case or
/// Unicode form only.
std::u16string folded(const OdString& path);

/// Whether the disk that holds the root of a repository finds a file under its name in other
/// letters. Nothing is written to find that out.
bool ignoresLetterCase(const sys::Folder& root);

}  // namespace qrv
