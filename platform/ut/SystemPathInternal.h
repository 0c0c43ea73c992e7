#pragma once

#include <platform/kernel/OdString.h>

#include <optional>
#include <string>

namespace ut {

/// The path as the system takes it. Nothing, with `errno` set, for a path that holds a NUL, where
/// the system would cut it and reach another file, and for one that is too long.
std::optional<std::string> toSystemPath(const OdString& path);

/// True when the path names an existing folder or a link to one.
bool isFolder(const std::string& systemPath);

}  // namespace ut
