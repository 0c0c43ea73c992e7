#pragma once

#include <sys/CallsInternal.h>

#include <dirent.h>

#include <string_view>

namespace sys {

/// Gives `visit` each entry of a folder that was just opened for reading, but for "." and "..": its
/// name, behind which a NUL stands, and its type (DT_REG and the like). False, with the cause in
/// `errno`, when only some of them can be told.
template <class Visit>
bool visitEntries(int folder, Visit visit) {
    // Read without opendir, whose stream costs an allocation of this size and a further call a
    // folder.
    constexpr std::size_t bufferBytes = 32768;
    alignas(dirent64) char buffer[bufferBytes];
    for (;;) {
        const ssize_t filled = calls::readEntries(folder, buffer, sizeof buffer);
        if (filled <= 0)
            return filled == 0;
        for (ssize_t position = 0; position < filled;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + position);
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                visit(name, entry->d_type);
            position += entry->d_reclen;
        }
    }
}

}  // namespace sys
