#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitRecord.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/RecordFrameInternal.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/ShortForms.h>
#include <engine/history/SumsInternal.h>
#include <engine/paths/Layout.h>
#include <platform/kernel/Clock.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

constexpr std::uint32_t permissions = 0666;
/// A commit of a million files has some hundred megabytes. More is not worth the memory.
constexpr std::size_t maximumRecordBytes = 512 << 20;
constexpr std::int64_t millisecondsPerSecond = 1000;
/// Of so many files each is flushed by itself; of more the file system at once.
constexpr std::size_t flushedOneByOne = 4;
constexpr std::size_t filesAtOnce = 200;

ErrorMessage cannotWrite(const std::string& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be written: %ls"), OdString::fromNarrow(path), cause);
}

/// In a smaller one, nothing is gained: a file takes a block of the disk.
constexpr std::size_t filesOfFrame = 16;

std::error_code writeInto(sys::NewFile& file, const NewCommit& commit) {
    std::error_code error;
    const auto write = [&file, &error](std::span<const char> bytes) {
        if (!error && !bytes.empty())
            error = file.write(bytes);
    };
    if (commit.deltas.size() < filesOfFrame) {
        writeRecord(commit, write);
        return error;
    }
    RecordFrame frame(write);
    writeRecord(commit, [&frame](std::string_view bytes) { frame.add(bytes); });
    frame.finish();
    return error;
}

Expected<sys::NewFile> writtenRecord(History& history, const CommitEntry& entry,
                                     const sys::Folder& root) {
    const NewCommit commit = {entry.parents, entry.author, entry.message, entry.timeSeconds,
                              history.deltas(entry.hash)};
    const std::string path = layout::commitRecordPath(entry.hash);
    sys::Outcome<sys::NewFile> file = root.newFile(path, permissions);
    if (!file)
        return cannotWrite(path, file.error());
    if (const std::error_code error = writeInto(*file, commit))
        return cannotWrite(path, error);
    if (const std::error_code error = file->close())
        return cannotWrite(path, error);
    return std::move(*file);
}

std::error_code publish(std::vector<sys::NewFile>& files, const sys::Folder& root) {
    const bool isFew = files.size() <= flushedOneByOne;
    if (const std::error_code error = isFew ? std::error_code() : root.flushFileSystem())
        return error;
    for (sys::NewFile& file : files) {
        if (const std::error_code error = isFew ? file.flush() : std::error_code())
            return error;
        if (const std::error_code error = file.publish(sys::NewFile::Existing::replace))
            return error;
    }
    files.clear();
    return root.flush(layout::commitRecordsFolder);
}

/// Files that are written and not yet published are few at a time.
Expected<void> recordCommits(const std::vector<CommitEntry>& entries, History& history,
                             const sys::Folder& root) {
    std::vector<sys::NewFile> files;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        Expected<sys::NewFile> file = writtenRecord(history, entries[index], root);
        if (!file)
            return file.error();
        files.push_back(std::move(*file));
        if (files.size() < filesAtOnce && index + 1 < entries.size())
            continue;
        if (const std::error_code error = publish(files, root))
            return cannotWrite(layout::commitRecordsFolder, error);
    }
    return {};
}

std::vector<CommitEntry> unrecordedCommits(std::int64_t firstNumber, History& history,
                                           const sys::Folder& root) {
    std::vector<CommitEntry> entries;
    const std::int64_t last = history.lastNumber();
    for (std::int64_t number = firstNumber; number <= last; ++number) {
        std::optional<CommitEntry> entry = history.commitByNumber(number);
        if (entry && !root.status(layout::commitRecordPath(entry->hash)))
            entries.push_back(std::move(*entry));
    }
    return entries;
}

std::vector<RecordedMove> missingMoves(const ReferenceMap& recorded, const ReferenceMap& present) {
    std::vector<RecordedMove> moves;
    for (const auto& [key, hash] : recorded) {
        if (!present.contains(key))
            moves.push_back({.type = key.first,
                             .name = key.second,
                             .before = hash,
                             .after = {},
                             .command = {}});
    }
    for (const auto& [key, hash] : present) {
        const auto before = recorded.find(key);
        if (before == recorded.end() || before->second != hash)
            moves.push_back({.type = key.first,
                             .name = key.second,
                             .before = before == recorded.end() ? OdString() : before->second,
                             .after = hash,
                             .command = {}});
    }
    return moves;
}

}  // namespace

ReferenceMap referencesOf(History& history) {
    ReferenceMap references;
    for (const common::Reference& reference : history.references())
        references[{reference.type, reference.name}] = reference.commitHash;
    return references;
}

RecordState stateOf(const ReferenceRecord& record, History& history) {
    if (record.references() == referencesOf(history))
        return record.isThere() ? RecordState::same : RecordState::behind;
    const bool isNewer = generationOf(history.database()) > record.generation();
    return isNewer || record.moves().empty() ? RecordState::behind : RecordState::ahead;
}

Expected<void> checkNotOlder(const ReferenceRecord& record, History& history) {
    if (stateOf(record, history) != RecordState::ahead)
        return {};
    const RecordedMove& last = record.moves().back();
    return ErrorMessage{OdString::format(
        tr(L"The history '%ls' is older than what '%ls' tells, which ends with '%ls' at %ls (%ls). "
           L"Bring the newer history back, or let qrv recover --history take what was recorded"),
        printable(history.database().path()), OdString(layout::referenceRecordPath), last.name,
        last.after.isEmpty() ? OdString(L"-") : shortHash(last.after), timeText(last.timeSeconds))};
}

Expected<ReferenceRecord> checkedRecord(History& history, const sys::Folder& root) {
    std::optional<ReferenceRecord> end =
        ReferenceRecord::readEnd(root, generationOf(history.database()), referencesOf(history));
    if (end)
        return std::move(*end);
    // Read before the history is asked once more: another process writes them the other way round.
    Expected<ReferenceRecord> record = ReferenceRecord::read(root);
    if (!record)
        return record;
    if (Expected<void> notOlder = checkNotOlder(*record, history); !notOlder)
        return notOlder.error();
    return record;
}

Expected<void> updateRecords(ReferenceRecord& record, std::int64_t firstNumber,
                             const std::string& command, History& history,
                             const sys::Folder& root) {
    const ReferenceMap present = referencesOf(history);
    std::vector<RecordedMove> moves = missingMoves(record.references(), present);
    const std::vector<CommitEntry> commits = unrecordedCommits(firstNumber, history, root);
    if (Expected<void> recorded = recordCommits(commits, history, root); !recorded)
        return recorded;
    if (moves.empty())
        return {};
    // Only the last line has the generation of the history, so that a record that ends before it is
    // known to be behind.
    const std::int64_t generation = generationOf(history.database());
    for (RecordedMove& move : moves) {
        move.generation = std::max<std::int64_t>(generation - 1, 0);
        move.timeSeconds = kernel::now() / millisecondsPerSecond;
        move.command = command;
    }
    moves.back().generation = generation;
    return record.append(moves, root);
}

std::int64_t firstUnrecordedCommit(History& history, const sys::Folder& root) {
    std::int64_t number = history.lastNumber();
    for (; number > 0; --number) {
        const std::optional<CommitEntry> entry = history.commitByNumber(number);
        if (!entry)
            continue;
        // One that cannot be asked for may be there; whoever reads it is told.
        const auto status = root.status(layout::commitRecordPath(entry->hash));
        if (status || !sys::meansAbsent(status.error()))
            break;
    }
    return number + 1;
}

Expected<std::set<OdString>> recordedCommits(const sys::Folder& root) {
    std::set<OdString> hashes;
    const sys::Outcome<std::vector<std::string>> names = root.list(layout::commitRecordsFolder);
    if (!names && sys::meansAbsent(names.error()))
        return hashes;
    if (!names)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"),
                             OdString(layout::commitRecordsFolder), names.error());
    for (const std::string& name : *names) {
        const OdString hash = OdString::fromNarrow(name);
        if (isDigest(hash))
            hashes.insert(hash);
    }
    return hashes;
}

Expected<NewCommit> recordedCommit(const OdString& hash, const sys::Folder& root) {
    const std::string path = layout::commitRecordPath(hash);
    const sys::Outcome<sys::InputFile> file = root.openFile(path);
    const sys::Outcome<std::vector<char>> whole =
        file ? file->readWhole(maximumRecordBytes) : file.error();
    if (!whole)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), OdString::fromNarrow(path),
                             whole.error());
    const Expected<std::string> bytes =
        recordIn(std::string_view(whole->data(), whole->size()), maximumRecordBytes);
    if (!bytes || OdString::fromNarrow(Digest::of(*bytes)) != hash)
        return ErrorMessage{OdString::format(tr(L"'%ls' is damaged: its contents have another "
                                                L"digest"),
                                             printable(OdString::fromNarrow(path)))};
    return commitOfRecord(*bytes);
}

}  // namespace qrv
