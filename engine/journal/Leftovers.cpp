#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/FileStep.h>
#include <engine/journal/Leftovers.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/AsideName.h>
#include <engine/worktree/FileDigest.h>
#include <sys/TemporaryName.h>

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// For what lies aside and belongs to no step of the entry.
constexpr const char* nameWithoutStep = "found";

/// One folder of an entry.
class Cleaning {
public:
    Cleaning(sys::Folder folder, std::string path, const JournalEntry& entry, Caller& caller)
        : folder_(std::move(folder)), path_(std::move(path)), entry_(entry), caller_(caller) {
        for (const TreeStep& step : entry.steps) {
            for (const OdString& url : {step.before, step.after})
                stored_.insert(digestOfUrl(url));
        }
        stored_.erase(OdString());
    }

    Expected<void> settle() const {
        const sys::Outcome<std::vector<std::string>> names = folder_.list();
        if (!names)
            return systemFailure(tr(L"The folder '%ls' cannot be opened: %ls"),
                                 OdString::fromNarrow(path_), names.error());
        for (const std::string& name : *names) {
            if (!sys::isTemporaryName(name) && !isAsideName(name))
                continue;
            const sys::Outcome<sys::FileStatus> status = folder_.status(name);
            if (!status && !sys::meansAbsent(status.error()))
                return unreadable(name, status.error());
            // Anything else is not ours.
            if (!status || status->kind == sys::FileKind::folder)
                continue;
            Expected<void> done = sys::isTemporaryName(name) ? remove(name) : settleAside(name);
            if (!done)
                return done;
        }
        return {};
    }

private:
    ErrorMessage unreadable(const std::string& name, std::error_code cause) const {
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), OdString::fromNarrow(name), cause);
    }

    Expected<void> remove(const std::string& name) const {
        const std::error_code error = folder_.removeFile(name);
        if (error && !sys::meansAbsent(error))
            return systemFailure(tr(L"'%ls' cannot be removed: %ls"), OdString::fromNarrow(name),
                                 error);
        return {};
    }

    Expected<void> settleAside(const std::string& aside) const {
        const Expected<bool> isKept = isStored(aside);
        if (!isKept)
            return isKept.error();
        if (*isKept)
            return remove(aside);
        const std::optional<std::string> name = nameOfStep(aside);
        if (!name)
            return keepBeside(folder_, aside, nameWithoutStep, caller_);
        const std::error_code error = folder_.renameToFree(aside, *name);
        if (error != std::errc::file_exists)
            return error ? Expected<void>(unreadable(aside, error)) : Expected<void>();
        return takePlaceOf(*name, aside);
    }

    /// What was saved takes the place of what the entry had put there, but not of what was saved
    /// after it.
    Expected<void> takePlaceOf(const std::string& name, const std::string& aside) const {
        const Expected<bool> isOurs = isStored(name);
        if (!isOurs)
            return isOurs.error();
        if (!*isOurs)
            return keepBeside(folder_, aside, name, caller_);
        std::error_code error = folder_.exchange(aside, name);
        if (error == std::errc::not_supported)
            return keepBeside(folder_, aside, name, caller_);
        if (error)
            return unreadable(aside, error);
        const Expected<bool> isKept = isStored(aside);
        if (!isKept)
            return isKept.error();
        return *isKept ? remove(aside) : keepBeside(folder_, aside, name, caller_);
    }

    /// Whether what has the name is a version that the entry knows, so that it is in the storage.
    Expected<bool> isStored(const std::string& name) const {
        const sys::Outcome<sys::FileStatus> status = folder_.status(name);
        if (!status && !sys::meansAbsent(status.error()))
            return unreadable(name, status.error());
        if (!status || status->kind != sys::FileKind::regular)
            return false;
        const Expected<OdString> digest = digestOfFile(folder_, OdString::fromNarrow(name));
        if (!digest)
            return digest.error();
        return stored_.contains(*digest);
    }

    /// The name of the file that was moved aside; nothing when it is of another entry.
    std::optional<std::string> nameOfStep(const std::string& aside) const {
        const std::optional<std::size_t> position = positionOfAside(aside);
        if (!position || *position >= entry_.steps.size() ||
            folderOf(entry_.steps[*position].path).toNarrow() != path_)
            return std::nullopt;
        return nameOf(entry_.steps[*position].path).toNarrow();
    }

    sys::Folder folder_;
    std::string path_;
    const JournalEntry& entry_;
    Caller& caller_;
    std::set<OdString> stored_;
};

}  // namespace

Expected<void> settleLeftovers(WorkingTree& workingTree, const JournalEntry& entry) {
    std::set<std::string> paths;
    for (const TreeStep& step : entry.steps)
        paths.insert(folderOf(step.path).toNarrow());
    for (const std::string& path : paths) {
        sys::Outcome<sys::Folder> folder = workingTree.folder().openFolder(path);
        // A link or a file in a folder's place is somebody's, and nothing of ours lies behind it.
        if (!folder && (sys::meansAbsent(folder.error()) ||
                        folder.error() == std::errc::too_many_symbolic_link_levels))
            continue;
        if (!folder)
            return systemFailure(tr(L"The folder '%ls' cannot be opened: %ls"),
                                 OdString::fromNarrow(path), folder.error());
        Expected<void> settled =
            Cleaning(std::move(*folder), path, entry, workingTree.caller()).settle();
        if (!settled)
            return settled;
    }
    return {};
}

}  // namespace qrv
