#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <common/worktree/File.h>
#include <common/worktree/RepoChanges.h>
#include <common/worktree/StatusRef.h>
#include <platform/kernel/OdString.h>

#include <memory>
#include <variant>
#include <vector>

namespace common {

/// No candidate has the name that was looked for.
struct NotFound {};

/// Chooses files for the next commit. The candidates are the modified, then the added, then the
/// removed files, each list in its own order; a path in two lists is two candidates.
///
/// A short name finds a path that ends in it: "plan" finds "sub/plan.dwg" and "sub/floorplan.dwg",
/// and "plan.dwg" both as well. A name without an extension stands for the name with one or more of
/// letters only. It is used as a regular expression as it is typed, so a "." matches any character;
/// one that does not compile throws `std::regex_error`, and so does one that would take more stack
/// than there is: of 8 MiB some ten thousand parentheses, or fifty thousand other units beside one
/// character that means something in expressions. Other names may have any length.
///
/// Movable, not copyable; an explorer that was moved from can only be destroyed or assigned to.
class QRV_COMMON_EXPORT RepoFileExplorer {
public:
    /// Copies what it needs of `changes`. Nothing is staged yet.
    RepoFileExplorer(const RepoChanges& changes, const RootPath& root);
    RepoFileExplorer(RepoFileExplorer&& other) noexcept;
    RepoFileExplorer& operator=(RepoFileExplorer&& other) noexcept;
    RepoFileExplorer(const RepoFileExplorer&) = delete;
    RepoFileExplorer& operator=(const RepoFileExplorer&) = delete;
    ~RepoFileExplorer();

    /// All candidates, in order.
    std::vector<StatusRef> possibleStageFiles() const;
    /// Whether a candidate is not yet staged.
    bool hasFilesToStage() const;

    /// The one candidate that has the short name, staged or not. More than one is an error that
    /// names it.
    std::variant<StagedFile, NotFound, ErrorMessage> findForStaging(const OdString& name) const;
    /// The path of the first unchanged file that has the short name; empty when there is none.
    OdString findUnchanged(const OdString& name) const;

    /// Stages the candidate of the same path and change. False when there is none or it is staged.
    bool stage(const StagedFile& file);
    /// All candidates, in order, each marked as selected, as soon as one is staged. While none is,
    /// an empty list, or an error when there is nothing to commit.
    Expected<std::vector<StatusRef>> stagedFiles() const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace common
