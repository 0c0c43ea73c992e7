#pragma once

#include <common/base/Expected.h>
#include <engine/tree/FileDelta.h>
#include <engine/tree/Tree.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <optional>
#include <vector>

namespace qrv {

// No disk can hold a file and, below its name, another one.

/// Answers for files that nobody wants to hold as a whole: those of a tree, or of a disk.
struct FileQuestions {
    /// Whether there is a file of that path.
    std::function<bool(const OdString& path)> isFile;
    /// The paths of the files below that name, if it is that of a folder.
    std::function<std::vector<OdString>(const OdString& path)> filesBelow;
};

/// Answers from the tree, which must live as long.
FileQuestions questionsOf(const Tree& tree);

/// Asks, for one new file after the other, whether there is room. That is quickest in the order of
/// the paths.
class RoomCheck {
public:
    /// A file of which `isGone(path)` is true does not count.
    RoomCheck(FileQuestions files, std::function<bool(const OdString& path)> isGone);

    /// The path of a file that lies where a file of the path `path` needs a folder, or below its
    /// name; empty when there is none.
    OdString fileInTheWay(const OdString& path);

private:
    OdString fileAbove(const OdString& path);

    FileQuestions files_;
    std::function<bool(const OdString& path)> isGone_;
    /// The last one that was found to have nothing in its way.
    std::optional<OdString> freeFolder_;
};

/// Fails when `tree` with `deltas` would hold a file and, below its name, another one. A person
/// makes such a tree who stages the file that took the place of a folder, but not that the files of
/// the folder are gone.
Expected<void> checkShape(FileQuestions tree, const std::vector<FileDelta>& deltas);

}  // namespace qrv
