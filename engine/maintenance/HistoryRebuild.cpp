#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/HistoryCheck.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SumsInternal.h>
#include <engine/maintenance/HistoryRebuild.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/paths/Layout.h>
#include <engine/repository/OpenState.h>
#include <engine/storage/Storages.h>
#include <engine/tree/FileDelta.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace qrv {

namespace {

class Rebuild {
public:
    Rebuild(const common::RootPath& root, const sys::Folder& folder, std::string command)
        : root_(root),
          folder_(folder),
          command_(std::move(command)),
          storages_([](const OdString&) { return OdString(); }) {}

    Expected<Rebuilt> run() {
        Expected<ReferenceRecord> record = ReferenceRecord::read(folder_);
        if (!record)
            return record.error();
        if (Expected<void> read = readDamaged(); !read)
            return read.error();
        if (Expected<void> read = readRecords(); !read)
            return read.error();
        History history = History::open(root_, Database::Access::create);
        mend(history, *record);
        if (Expected<void> kept = mendRecords(history, *record); !kept)
            return kept.error();
        if (Expected<void> kept = updateRecords(*record, 1, command_, history, folder_); !kept)
            return kept.error();
        return std::move(result_);
    }

private:
    void addProblem(const OdString& problem) { result_.problems.push_back(problem); }

    /// Reads what can be read of a damaged history, and puts it aside. A whole one stays.
    Expected<void> readDamaged() {
        const sys::Outcome<sys::FileStatus> status = folder_.status(layout::historyPath);
        if (!status || status->sizeBytes == 0)
            return {};
        try {
            History history = History::open(root_, Database::Access::readWrite);
            if (problemsOf(history).empty())
                return {};
            readCommitsOf(history);
            readReferencesOf(history);
        } catch (const DatabaseError& error) {
            addProblem(error.description());
        }
        return setAside();
    }

    void readCommitsOf(History& history) {
        for (const std::int64_t number : commitNumbers(history)) {
            try {
                const std::optional<CommitEntry> entry = history.commitByNumber(number);
                if (!entry)
                    continue;
                NewCommit commit = {entry->parents, entry->author, entry->message,
                                    entry->timeSeconds, history.deltas(entry->hash)};
                if (hashOf(commit) == entry->hash)
                    commits_.emplace(entry->hash, std::move(commit));
            } catch (const DatabaseError&) {
                // Its record may be whole.
                continue;
            }
        }
    }

    void readReferencesOf(History& history) {
        try {
            found_ = referencesOf(history);
            foundGeneration_ = generationOf(history.database());
        } catch (const DatabaseError& error) {
            addProblem(error.description());
        }
    }

    Expected<void> setAside() {
        for (int number = 1;; ++number) {
            const std::string path = layout::damagedHistoryPath(number);
            const sys::Outcome<sys::FileStatus> status = folder_.status(path);
            if (status)
                continue;
            if (const std::error_code error = folder_.rename(layout::historyPath, path))
                return systemFailure(tr(L"'%ls' cannot be renamed: %ls"), root_.dbPath(), error);
            result_.setAside = OdString::fromNarrow(path);
            return {};
        }
    }

    Expected<void> readRecords() {
        const Expected<std::set<OdString>> hashes = recordedCommits(folder_);
        if (!hashes)
            return hashes.error();
        for (const OdString& hash : *hashes) {
            if (commits_.contains(hash))
                continue;
            Expected<NewCommit> commit = recordedCommit(hash, folder_);
            if (!commit) {
                damagedRecords_.emplace(hash, commit.error().message);
                continue;
            }
            recorded_.insert(hash);
            commits_.emplace(hash, std::move(*commit));
        }
        return {};
    }

    /// What is damaged in the records goes, where the history knows it, and is recorded anew.
    Expected<void> mendRecords(History& history, ReferenceRecord& record) {
        for (const auto& [hash, damage] : damagedRecords_) {
            if (!history.commit(hash)) {
                addProblem(damage);
                continue;
            }
            const std::string path = layout::commitRecordPath(hash);
            if (const std::error_code error = folder_.removeFile(path))
                return systemFailure(tr(L"'%ls' cannot be removed: %ls"),
                                     OdString::fromNarrow(path), error);
        }
        return record.damagedLine() > 0 ? record.append({}, folder_) : Expected<void>();
    }

    void mend(History& history, const ReferenceRecord& record) {
        if (record.damagedLine() > 0 && history.lastNumber() == 0)
            addProblem(OdString::format(tr(L"'%ls' is damaged in line %i"),
                                        OdString(layout::referenceRecordPath),
                                        record.damagedLine()));
        DatabaseTransaction transaction(history.database());
        const bool isOlder = isBehind(history, record);
        addCommits(history, record);
        if (isOlder) {
            if (foundGeneration_ <= record.generation())
                pointAll(history, found_);
            for (const RecordedMove& move : record.moves()) {
                if (move.after.isEmpty())
                    history.removeReference(move.name, move.type);
            }
            pointAll(history, record.references());
            if (foundGeneration_ > record.generation())
                pointAll(history, found_);
            setGeneration(history.database(),
                          std::max({generationOf(history.database()), record.generation() + 1,
                                    foundGeneration_}));
            renewSum(history.database());
            moveHead(history);
        }
        transaction.commit();
    }

    /// Whether the record knows better than the history, which may be new.
    static bool isBehind(History& history, const ReferenceRecord& record) {
        return history.lastNumber() == 0 || stateOf(record, history) == RecordState::ahead;
    }

    /// Parents first; of those that could come next the one that was referred to first, else the
    /// oldest.
    void addCommits(History& history, const ReferenceRecord& record) {
        std::map<OdString, std::size_t> places;
        for (const RecordedMove& move : record.moves())
            places.emplace(move.after, places.size());
        std::vector<OdString> waiting;
        for (const auto& [hash, commit] : commits_) {
            if (!history.commit(hash))
                waiting.push_back(hash);
        }
        const auto keyOf = [&](const OdString& hash) {
            const auto place = places.find(hash);
            return std::pair(place == places.end() ? places.size() : place->second,
                             commits_.at(hash).timeSeconds);
        };
        std::sort(waiting.begin(), waiting.end(),
                  [&](const auto& one, const auto& other) { return keyOf(one) < keyOf(other); });
        while (addNext(history, waiting)) {
        }
        for (const OdString& hash : waiting)
            addProblem(OdString::format(
                tr(L"The commit '%ls' cannot be made anew: one that it builds on is kept nowhere"),
                hash));
    }

    bool addNext(History& history, std::vector<OdString>& waiting) {
        bool isAnyAdded = false;
        std::vector<OdString> left;
        for (const OdString& hash : waiting) {
            NewCommit& commit = commits_.at(hash);
            const bool isReady =
                std::all_of(commit.parents.begin(), commit.parents.end(),
                            [&history](const auto& parent) { return history.commit(parent); });
            if (!isReady) {
                left.push_back(hash);
                continue;
            }
            if (recorded_.contains(hash))
                addSizesTo(commit);
            history.add(commit);
            ++result_.commits;
            isAnyAdded = true;
        }
        waiting = std::move(left);
        return isAnyAdded && !waiting.empty();
    }

    /// From what is stored; a version that is not kept here has none that anybody knows.
    void addSizesTo(NewCommit& commit) {
        for (FileDelta& delta : commit.deltas) {
            if (delta.url.isEmpty())
                continue;
            const Expected<std::unique_ptr<VersionReader>> version =
                storages_.ofUrl(delta.url).open(root_, delta.url);
            if (version && *version != nullptr)
                delta.sizeBytes = (*version)->sizeBytes();
            else
                addProblem(OdString::format(tr(L"The size of '%ls' is not known: its contents are "
                                               L"not kept"),
                                            printable(delta.path)));
        }
    }

    void pointAll(History& history, const ReferenceMap& references) {
        for (const auto& [key, hash] : references)
            point(history, key, hash);
    }

    void point(History& history, const ReferenceKey& key, const OdString& hash) {
        if (!history.commit(hash))
            return addProblem(
                OdString::format(tr(L"'%ls' cannot be made anew: its commit '%ls' is kept nowhere"),
                                 key.second, hash));
        if (history.reference(key.second, key.first) == hash)
            return;
        history.setReference(key.second, key.first, hash);
        ++result_.references;
    }

    void moveHead(History& history) {
        const Host host;
        const Expected<std::shared_ptr<common::Cache>> cache = openState(root_, folder_, host);
        if (!cache)
            return addProblem(cache.error().message);
        const OdString branch = (*cache)->read().head.reference;
        const OdString head =
            history.reference(branch, common::RefType::Branch).value_or(OdString());
        if (head.isEmpty())
            addProblem(OdString::format(tr(L"There is no commit of the current branch '%ls'"),
                                        printable(branch)));
        history.changeHeadFiles(deltasOf(changesBetween(history.headFiles(), history.tree(head))));
        history.setNote(headNote, head);
    }

    const common::RootPath& root_;
    const sys::Folder& folder_;
    std::string command_;
    Storages storages_;
    /// By hash; those of records have no sizes yet.
    std::map<OdString, NewCommit> commits_;
    std::set<OdString> recorded_;
    /// Why they cannot be read.
    std::map<OdString, OdString> damagedRecords_;
    /// Of the damaged history.
    ReferenceMap found_;
    std::int64_t foundGeneration_ = 0;
    Rebuilt result_;
};

}  // namespace

Expected<Rebuilt> rebuildHistory(const common::RootPath& root, const sys::Folder& folder,
                                 const std::string& command) {
    return Rebuild(root, folder, command).run();
}

}  // namespace qrv
