#pragma once

#include <engine/paths/RelativePath.h>
#include <engine/tree/TreeFile.h>
#include <platform/kernel/OdString.h>
#include <sys/FileStamp.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace qrv {

/// A file of HEAD.
struct HeadFile {
    RelativePath path;
    TreeFile file;
    /// Of the working file when its contents were last known to be these; nothing when it has to be
    /// read to know.
    std::optional<sys::FileStamp> stamp;
};

/// What a look at the working file of that path said, or that nothing is known.
struct NotedStamp {
    OdString path;
    std::optional<sys::FileStamp> stamp;
};

/// Gives the stamp of a working file that has just got the contents of HEAD; nothing when it is not
/// known. An empty function knows none.
using StampOf = std::function<std::optional<sys::FileStamp>(const OdString& path)>;

/// A change of a row of the files of HEAD, by which a copy of all of them knows what it is a copy
/// of: the copy is made when this change was the last one.
struct HeadChange {
    /// Counts upwards.
    std::int64_t sequence = 0;
    /// At random: two histories of one beginning have others.
    std::int64_t mark = 0;

    friend bool operator==(const HeadChange&, const HeadChange&) = default;
};

}  // namespace qrv
