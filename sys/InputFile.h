#pragma once

#include <sys/FileStamp.h>
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

    /// As it is now; two answers that differ mean that somebody writes to the file.
    Outcome<FileStamp> stamp() const;

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
