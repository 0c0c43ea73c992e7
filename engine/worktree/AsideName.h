#pragma once

#include <platform/kernel/OdString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qrv {

/// The name that a working file has in its folder while it is looked at before it is deleted, or
/// while a new file is about to change names with it: whatever it holds then may be kept nowhere
/// else. Whoever finds it after a crash knows by the step's place in its entry which file it was.
///
/// `attempt` tells apart what a killed process left from what comes later.
std::string asideName(std::size_t position, int attempt);

bool isAsideName(std::string_view name);

/// The place in the entry; nothing for another name.
std::optional<std::size_t> positionOfAside(std::string_view name);

/// Whether the file is one that a process of ours is about to rename, or that it left when it ended
/// in the middle of its work: never anybody's file.
bool isOurOwn(const OdString& path);

}  // namespace qrv
