#include <cli/terminal/Message.h>
#include <cli/text/StagingWarnings.h>
#include <cli/user/Settings.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/RelativePath.h>
#include <engine/worktree/FoldedName.h>
#include <engine/worktree/OpenDrawings.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using common::FileChange;
using common::StagedFile;

constexpr std::int64_t bytesPerMegabyte = 1'000'000;
/// More notes of one kind are only counted.
constexpr int mostOfAKind = 5;

OdString parentOf(const OdString& path) {
    const int slash = path.reverseFind(L'/');
    return slash < 0 ? OdString() : path.left(slash);
}

/// A limit that the size is below, as a round number.
std::int64_t roundedUp(std::int64_t sizeBytes) {
    constexpr std::int64_t step = 100;
    return (sizeBytes / bytesPerMegabyte / step + 1) * step;
}

/// Notes of one kind.
class Notes {
public:
    Notes() = default;
    Notes(const Notes&) = delete;
    Notes& operator=(const Notes&) = delete;
    ~Notes() {
        if (count_ > mostOfAKind)
            printMessage(
                OdString::format(tr(L"Note: and likewise for others: %i"), count_ - mostOfAKind));
    }

    void add(const OdString& note) {
        if (++count_ <= mostOfAKind)
            printMessage(note);
    }

private:
    int count_ = 0;
};

/// All names of files and folders that are in the way of another one on some file system.
class NameTable {
public:
    explicit NameTable(const std::vector<OdString>& present) {
        for (const OdString& path : present) {
            for (OdString part = path; !part.isEmpty(); part = parentOf(part)) {
                // The folders above one that is known are known too.
                if (!names_.insert(part).second)
                    break;
                byFolded_[folded(part)].push_back(part);
            }
        }
    }

    /// Another name that could be taken for `path` or a folder above it, with the part of `path`
    /// that it could be taken for.
    struct Clash {
        OdString part;
        OdString other;
    };
    std::optional<Clash> clashOf(const OdString& path) const {
        for (OdString part = path; !part.isEmpty(); part = parentOf(part)) {
            const auto alike = byFolded_.find(folded(part));
            if (alike == byFolded_.end())
                continue;
            for (const OdString& other : alike->second) {
                // Names that differ in a folder above are told for that folder.
                if (other != part && parentOf(other) == parentOf(part))
                    return Clash{.part = part, .other = other};
            }
        }
        return std::nullopt;
    }

private:
    std::set<OdString> names_;
    std::map<std::u16string, std::vector<OdString>> byFolded_;
};

std::set<OdString> contentsOf(const std::vector<StagedFile>& files) {
    std::set<OdString> paths;
    for (const StagedFile& file : files) {
        if (file.change != FileChange::removed)
            paths.insert(file.path);
    }
    return paths;
}

bool exceeds(std::int64_t sizeBytes, std::int64_t limitMegabytes) {
    return limitMegabytes > 0 && sizeBytes > limitMegabytes * bytesPerMegabyte;
}

void warnOfSizes(const std::vector<StagedFile>& files, const WorkingTree& workingTree,
                 const Settings& settings) {
    const std::set<OdString> chosen = contentsOf(files);
    std::set<OdString> staged =
        contentsOf(workingTree.repository().stateWithoutIndex().stagedFiles);
    staged.insert(chosen.begin(), chosen.end());
    Notes notes;
    std::int64_t total = 0;
    for (const OdString& path : staged) {
        const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
        const std::int64_t sizeBytes = status ? status->sizeBytes : 0;
        total += sizeBytes;
        if (chosen.contains(path) && exceeds(sizeBytes, settings.largeFileMegabytes))
            notes.add(OdString::format(tr(L"Note: '%ls' has %i megabytes, and every version of it "
                                          L"is kept (qrv config large-file %i allows that)"),
                                       printable(path), sizeBytes / bytesPerMegabyte,
                                       roundedUp(sizeBytes)));
    }
    if (exceeds(total, settings.largeCommitMegabytes))
        printMessage(OdString::format(tr(L"Note: the next commit has %i megabytes (qrv config "
                                         L"large-commit %i allows that)"),
                                      total / bytesPerMegabyte, roundedUp(total)));
}

/// Only of new names: a person who keeps an old one has been told.
void warnOfNames(const std::vector<StagedFile>& files, const WorkingChanges& changes) {
    std::vector<OdString> added;
    for (const StagedFile& file : files) {
        if (file.change == FileChange::added)
            added.push_back(file.path);
    }
    if (added.empty())
        return;
    const NameTable table(presentFiles(changes));
    std::set<std::pair<OdString, OdString>> told;
    Notes clashes;
    Notes unportable;
    for (const OdString& path : added) {
        const std::optional<NameTable::Clash> clash = table.clashOf(path);
        if (clash && told.insert(std::minmax(clash->part, clash->other)).second)
            clashes.add(OdString::format(tr(L"Note: '%ls' and '%ls' are one name on systems that "
                                            L"do not tell letter case or accents apart"),
                                         printable(clash->part), printable(clash->other)));
        if (!isPortable(path.toNarrow()))
            unportable.add(OdString::format(tr(L"Note: Windows cannot hold a file of the name "
                                               L"'%ls'"),
                                            printable(path)));
    }
}

void warnOfOpenDrawings(const std::vector<StagedFile>& files, const WorkingTree& workingTree) {
    Notes notes;
    for (const StagedFile& file : files) {
        if (file.change == FileChange::removed)
            continue;
        if (const std::optional<OdString> lock = lockBeside(file.path, workingTree))
            notes.add(OdString::format(tr(L"Note: somebody seems to have '%ls' open ('%ls' lies "
                                          L"beside it); what is not saved is not committed"),
                                       printable(file.path), printable(*lock)));
    }
}

}  // namespace

void warnBeforeStaging(const std::vector<StagedFile>& files, const WorkingChanges& changes,
                       const WorkingTree& workingTree) {
    const Expected<Settings> settings = readSettings();
    if (!settings)
        printMessage(OdString::format(tr(L"Note: your settings are not used: %ls"),
                                      settings.error().message));
    warnOfSizes(files, workingTree, settings ? *settings : Settings());
    warnOfNames(files, changes);
    warnOfOpenDrawings(files, workingTree);
}

}  // namespace qrv::cli
