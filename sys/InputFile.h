#pragma once

#include <sys/FileVersion.h>
#include <sys/Handle.h>
#include <sys/Outcome.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace sys {

/// A regular file that is open for reading, from its beginning to its end.
class InputFile {
public:
    /// Reads the next bytes and gives their number: less than asked for only at the end.
    Outcome<std::size_t> read(std::span<char> buffer);

    /// Reads the file from its beginning to its end. `file_too_large` for more than `mostBytes`,
    /// which are not read then.
    Outcome<std::vector<char>> readWhole(std::size_t mostBytes) const;

    /// Reads what lies at `position`, and leaves where `read` goes on as it is.
    Outcome<std::size_t> readAt(std::int64_t position, std::span<char> buffer) const;
    /// How many names the file has.
    Outcome<std::uint64_t> countNames() const;

    /// Size and times as they are now; two answers that differ mean that somebody writes to the
    /// file.
    struct Stamp {
        std::int64_t sizeBytes = 0;
        /// Nanoseconds since 1970-01-01T00:00:00Z.
        std::int64_t modifiedNs = 0;
        /// The same for the last change of contents, name or permissions.
        std::int64_t changedNs = 0;
        std::uint32_t permissions = 0;

        friend bool operator==(const Stamp&, const Stamp&) = default;
    };
    Outcome<Stamp> stamp() const;
    Outcome<FileVersion> version() const;

    /// Whether another process has the file open for writing, or holds a lock on any part of it.
    /// What the system does not tell (of another user's file, or on some network shares) counts as
    /// "no".
    bool isInUse() const;

private:
    friend class Folder;
    friend class NewFile;

    explicit InputFile(Handle handle) : handle_(std::move(handle)) {}

    Handle handle_;
};

}  // namespace sys
