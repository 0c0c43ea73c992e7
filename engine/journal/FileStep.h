#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/paths/RelativePath.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstddef>
#include <optional>

namespace qrv {

// One working file is brought from one version to another while any program may save it: what lay
// under the name is looked at after it was moved out of the way, when nobody can replace it any
// more, and it is deleted only when it is what was expected. A program that has it open for writing
// would write into what is deleted; such a file is not what was expected either.

/// The working file that a step changes, as it is to be found.
struct StepTarget {
    RelativePath path;
    /// Of its contents; empty when nothing is to lie there.
    OdString digest;
    /// The version that was seen to have these contents; without it, they are read.
    std::optional<sys::FileStamp> seen;
    /// The place of the step in its entry.
    std::size_t position = 0;
};

/// How a step ended.
struct StepEnd {
    enum class Kind {
        done,
        left,  ///< something unexpected lay there, and lies there still
    };

    Kind kind = Kind::done;
    /// What was written, when the step wrote something and is done.
    std::optional<sys::FileStamp> written;
};

/// Gives the new file, which is closed, the name of the target, in exchange for what lies there. On
/// a failure the old file lies under its name, or under an `asideName` beside it.
///
/// Where the file system cannot exchange two names, the old file is looked at immediately before it
/// is replaced: a save in that moment is not seen.
Expected<StepEnd> writeFile(const sys::Folder& root, const StepTarget& target, sys::NewFile file,
                            Caller& caller);

/// Removes the file, and the folders that it leaves empty. One that is not there is no error. On a
/// failure it lies under its name, or under an `asideName` beside it.
Expected<StepEnd> removeFile(const sys::Folder& root, const StepTarget& target, Caller& caller);

/// Gives what lies under the name `aside` in the folder, contents that are kept nowhere, a name
/// beside `name` that a person finds, and tells it.
Expected<void> keepBeside(const sys::Folder& folder, const std::string& aside,
                          const std::string& name, Caller& caller);

}  // namespace qrv
