#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ut {

/// One folder's entries, read once when the object is made.
///
/// A symbolic link to a regular file counts as a file. Links to folders, broken links, sockets,
/// pipes and devices are not listed, so that a walk neither loops nor leaves the tree.
class QRV_PLATFORM_EXPORT Dir {
public:
    /// What `list` lists, as bits.
    enum Attributes : std::uint32_t {
        kFiles = 1,     ///< regular files and links to them
        kFolders = 2,   ///< folders, without links to them
        kExtended = 4,  ///< adds nothing on Linux
    };

    /// Reads the folder `path`. `isOpened()` tells whether that worked.
    explicit Dir(const OdString& path);

    /// True when `path` is an existing folder; a link to a folder is one.
    static bool exists(const OdString& path);
    /// Makes the one folder `path`. False when it is there already or cannot be made.
    static bool create(const OdString& path);

    /// True when the whole folder was read.
    bool isOpened() const { return isOpened_; }
    /// The folder's path as it was given.
    OdString getName() const { return path_; }
    /// The bare names of the entries of the kinds in `attributes` that match `pattern` ("*" any
    /// characters, "?" one character; an empty pattern matches all), sorted by code units, without
    /// "." and "..". Empty when the folder could not be read.
    std::vector<OdString> list(const OdString& pattern, std::uint32_t attributes) const;

private:
    /// Where a name stands in `names_`.
    struct Entry {
        std::size_t begin = 0;
        std::size_t length = 0;
    };

    bool readEntries(int folder);
    void sort(std::vector<Entry>& entries) const;
    std::string_view bytesOf(const Entry& entry) const;
    std::vector<OdString> matching(const std::vector<Entry>& entries,
                                   const OdString& pattern) const;

    OdString path_;
    bool isOpened_ = false;
    bool isAscii_ = true;
    // All names as the system gave them, one behind the other: a name becomes a text only when it
    // is asked for.
    std::string names_;
    std::vector<Entry> files_;
    std::vector<Entry> folders_;
};

}  // namespace ut
