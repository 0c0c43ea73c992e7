#pragma once

#include <common/repository/RootPath.h>
#include <common/server/Reference.h>
#include <engine/database/Database.h>
#include <engine/history/Commit.h>
#include <engine/history/HeadFile.h>
#include <engine/paths/RelativePath.h>
#include <engine/tree/Shape.h>
#include <engine/tree/Tree.h>
#include <engine/tree/TreeChange.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace qrv {

/// The note that holds the hash of the commit whose files the files of HEAD are; whoever changes
/// them sets it. Empty before the first commit.
inline constexpr const wchar_t* headNote = L"head";
/// The note of the history that names the commit that is being merged, from its conflicts to the
/// commit that ends it.
inline constexpr const wchar_t* mergeNote = L"merge";

/// The history of a repository, `.qrv/qrv.db`: commits, branches and tags, the files of HEAD, and
/// what an interrupted command left to finish. docs/formats/history-database.md describes the file.
///
/// What it gives out was checked: paths and URLs are safe (RelativePath, CheckedUrl), hashes and
/// names of references are some, a parent is there and older than its child. So whoever changed the
/// file by hand gets an error, no path leaves the tree, and every walk ends.
///
/// Every operation may throw `DatabaseError`, also for a layout that is newer than this program. A
/// change is done, and on the disk, when its operation returns, and not at all when it throws;
/// several become one inside a `DatabaseTransaction` on `database()`.
///
/// The empty hash stands for what is before the first commit. A hash that no commit has is an
/// error, unless the operation has an answer for it.
class History {
public:
    /// Opens the history of a repository, making it with `create` when there is none. A file that
    /// is empty, because a process was killed while it made it, is none. For reading only, a
    /// missing history is an empty one, which is kept in memory and cannot be changed.
    static History open(const common::RootPath& root, Database::Access access);
    /// The same beneath the root's open folder.
    static History open(const sys::Folder& folder, const common::RootPath& root,
                        Database::Access access);

    Database& database() { return *database_; }

    // Commits.
    std::optional<CommitEntry> commit(const OdString& hash);
    std::optional<CommitEntry> commitByNumber(std::int64_t number);
    /// Those whose hash begins with `prefix`, by number, at most `limit`.
    std::vector<CommitEntry> commitsByPrefix(const OdString& prefix, int limit);
    /// The highest number of a commit; 0 when there is none.
    std::int64_t lastNumber();
    /// What the commit did, ordered by path.
    std::vector<FileDelta> deltas(const OdString& hash);
    /// The numbers of the commits that changed the file at `path`, renamed it from there or removed
    /// it, newest first.
    std::vector<std::int64_t> commitsOfPath(const OdString& path);
    /// Whether a commit put the version `url` at `path`.
    bool hasVersion(const OdString& path, const OdString& url);
    /// Newest first: a commit and everything that it builds on, at most `most`.
    std::vector<CommitEntry> ancestors(const OdString& hash, std::size_t most = SIZE_MAX);
    /// The commit that both build on and that no other such commit builds on, the newest (highest
    /// number) of several; nothing when the two have no common beginning.
    std::optional<OdString> mergeBase(const OdString& one, const OdString& other);
    /// Whether `descendant` is `ancestor` or builds on it. Everything builds on the empty hash.
    bool buildsOn(const OdString& descendant, const OdString& ancestor);
    /// The files of a commit: those of its first parent, with its deltas.
    Tree tree(const OdString& hash);
    /// What makes the files of the one commit of those of the other, ordered by path, without
    /// renames, in time for what changed between them.
    std::vector<TreeChange> difference(const OdString& before, const OdString& after);
    /// The file of that path in the commit; nothing when there is none.
    std::optional<TreeFile> fileAt(const OdString& hash, const OdString& path);
    /// Whether the commit has a file of that path or below, of which `isGone` is not true.
    bool holds(const OdString& hash, const OdString& path,
               const std::function<bool(const OdString& path)>& isGone = {});
    /// Adds a commit and gives it with its number and hash. The very same commit, already there, is
    /// given as it is. What could not be read back (a path that is not safe, a time out of range, a
    /// path twice) is refused.
    CommitEntry add(const NewCommit& commit);

    // References. Branches and tags have names of their own, each.
    /// Branches, then tags, each by name.
    std::vector<common::Reference> references();
    /// The hash that the reference names; nothing when there is no such reference.
    std::optional<OdString> reference(const OdString& name, common::RefType type);
    /// Makes the reference, or lets it name another commit. Refuses a name that is none
    /// (checkedReferenceName).
    void setReference(const OdString& name, common::RefType type, const OdString& hash);
    /// One that is not there is no error.
    void removeReference(const OdString& name, common::RefType type);

    // HEAD: the files that the working tree was last brought to.
    Tree headFiles();
    /// Gives them one by one, ordered by the bytes of their paths. `visit` changes nothing there.
    void visitHeadFiles(const std::function<void(HeadFile)>& visit);
    /// The same without the URLs, ordered by path: for a comparison, most of which needs none.
    std::vector<SizedFile> headSizes();
    /// The same for those of these paths that are in HEAD, in the order of `paths`.
    std::vector<SizedFile> headSizesOf(const std::vector<OdString>& paths);
    /// Whether there is a file of HEAD of that path.
    bool isHeadFile(const OdString& path);
    /// The paths of the files of HEAD below that folder.
    std::vector<OdString> headPathsBelow(const OdString& folder);
    /// The paths of the files of HEAD with contents of that size.
    std::vector<OdString> headPathsOfSize(std::int64_t sizeBytes);
    /// A file of HEAD; nothing when there is no such file.
    std::optional<HeadFile> headFile(const OdString& path);
    /// The URL of a file of HEAD; empty when there is no such file.
    OdString headUrl(const OdString& path);
    /// Makes `deltas` part of the files of HEAD, each new file with the stamp that is known of it.
    /// A stamp of another size than the contents is none. Files that go although they are not there
    /// are no error.
    void changeHeadFiles(const std::vector<FileDelta>& deltas, const StampOf& stampOf = {});
    /// Keeps the stamps of these files; one of another size than the contents is passed over.
    void noteStamps(const std::vector<NotedStamp>& stamps);

    /// The last change of a row of the files of HEAD, by which a copy of them is brought up to
    /// date; nothing in a file of an older layout, which notes none.
    std::optional<HeadChange> lastHeadChange();
    /// The paths whose rows changed since; nothing when it was forgotten, or is another history's.
    std::optional<std::vector<RelativePath>> headChangesAfter(const HeadChange& change);
    /// Forgets the changes before that number, which nobody needs any more. The last one stays.
    void forgetHeadChanges(std::int64_t before);

    /// A short text that is remembered under a name, such as the commit that is being merged; empty
    /// when there is none. Setting the empty text forgets it.
    OdString note(const OdString& name);
    void setNote(const OdString& name, const OdString& text);

private:
    explicit History(std::unique_ptr<Database> database);

    std::unique_ptr<Database> database_;
};

/// Answers for the files of HEAD, from one row or a few; the history must live as long.
FileQuestions questionsOfHead(History& history);

}  // namespace qrv
