#include <common/json/RowScannerInternal.h>
#include <common/state/StateKeysInternal.h>
#include <common/state/StateRowsInternal.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace common {

namespace {

/// A member of the object that is being read: at most once there.
template <class Content>
class Member {
public:
    void set(Content content) {
        if (content_)
            throw RowScanner::NotPlain();
        content_ = std::move(content);
    }
    Content required() {
        if (!content_)
            throw RowScanner::NotPlain();
        return std::move(*content_);
    }
    Content orEmpty() { return content_ ? std::move(*content_) : Content(); }

private:
    std::optional<Content> content_;
};

/// All keys are ASCII, so each unit is one byte. `Size` counts the NUL behind the key.
template <std::size_t Size>
bool is(std::string_view name, const wchar_t (&key)[Size]) {
    return name.size() == Size - 1 && std::equal(name.begin(), name.end(), key);
}

/// Calls `readMember` with the name of each member; it must read the member's value.
template <class ReadMember>
void readObject(RowScanner& scanner, ReadMember readMember) {
    scanner.expect('{');
    do
        readMember(scanner.name());
    while (scanner.take(','));
    scanner.expect('}');
}

template <class ReadElement>
void readList(RowScanner& scanner, ReadElement readElement) {
    scanner.expect('[');
    do
        readElement();
    while (scanner.take(','));
    scanner.expect(']');
}

Head readHead(RowScanner& scanner) {
    Member<OdString> reference;
    readObject(scanner, [&](std::string_view name) {
        if (!is(name, stateKeys::reference))
            throw RowScanner::NotPlain();
        reference.set(scanner.string());
    });
    return {reference.required(), std::nullopt};
}

FileChange readFileChange(RowScanner& scanner) {
    const Expected<FileChange> change = toFileChange(scanner.string());
    if (!change)
        throw RowScanner::NotPlain();
    return *change;
}

StagedFile readStagedFile(RowScanner& scanner) {
    Member<OdString> path;
    Member<FileChange> change;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::path))
            path.set(scanner.string());
        else if (is(name, stateKeys::fileChange))
            change.set(readFileChange(scanner));
        else
            throw RowScanner::NotPlain();
    });
    return {path.required(), change.required()};
}

std::vector<StagedFile> readStagedFiles(RowScanner& scanner) {
    std::vector<StagedFile> files;
    readList(scanner, [&] { files.push_back(readStagedFile(scanner)); });
    return files;
}

void readRename(RowScanner& scanner, std::map<OdString, OdString>& renames) {
    Member<OdString> newPath;
    Member<OdString> previousPath;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::newPath))
            newPath.set(scanner.string());
        else if (is(name, stateKeys::previousPath))
            previousPath.set(scanner.string());
        else
            throw RowScanner::NotPlain();
    });
    // The first of equal paths stays.
    renames.try_emplace(renames.end(), newPath.required(), previousPath.required());
}

std::map<OdString, OdString> readRenames(RowScanner& scanner) {
    std::map<OdString, OdString> renames;
    readList(scanner, [&] { readRename(scanner, renames); });
    return renames;
}

IndexData readIndexData(RowScanner& scanner) {
    Member<std::int64_t> lastChecked;
    Member<bool> modified;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::lastChecked))
            lastChecked.set(scanner.integer());
        else if (is(name, stateKeys::modified))
            modified.set(scanner.boolean());
        else
            throw RowScanner::NotPlain();
    });
    return {lastChecked.required(), modified.required()};
}

void readIndexEntry(RowScanner& scanner, std::map<OdString, IndexData>& index) {
    Member<OdString> path;
    Member<IndexData> entry;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::path))
            path.set(scanner.string());
        else if (is(name, stateKeys::entry))
            entry.set(readIndexData(scanner));
        else
            throw RowScanner::NotPlain();
    });
    // The first of equal paths stays. Files are written in the map's order, so the end is the
    // place.
    index.try_emplace(index.end(), path.required(), entry.required());
}

std::map<OdString, IndexData> readIndex(RowScanner& scanner) {
    std::map<OdString, IndexData> index;
    readList(scanner, [&] { readIndexEntry(scanner, index); });
    return index;
}

OdArray<OdDbHandle> readHandleList(RowScanner& scanner) {
    OdArray<OdDbHandle> handles;
    readList(scanner, [&] { handles.push_back(OdDbHandle(scanner.string())); });
    return handles;
}

DiffHandles readHandles(RowScanner& scanner) {
    Member<OdArray<OdDbHandle>> modified;
    Member<OdArray<OdDbHandle>> locallyRemoved;
    Member<OdArray<OdDbHandle>> remotelyRemoved;
    Member<OdArray<OdDbHandle>> modifiedBlocks;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::modified))
            modified.set(readHandleList(scanner));
        else if (is(name, stateKeys::locallyRemoved))
            locallyRemoved.set(readHandleList(scanner));
        else if (is(name, stateKeys::remotelyRemoved))
            remotelyRemoved.set(readHandleList(scanner));
        else if (is(name, stateKeys::modifiedBlocks))
            modifiedBlocks.set(readHandleList(scanner));
        else
            throw RowScanner::NotPlain();
    });
    DiffHandles handles;
    handles.modified = modified.orEmpty();
    handles.locallyRemoved = locallyRemoved.orEmpty();
    handles.remotelyRemoved = remotelyRemoved.orEmpty();
    handles.modifiedBlocks = modifiedBlocks.orEmpty();
    return handles;
}

ConflictData readConflict(RowScanner& scanner) {
    Member<OdString> path;
    Member<OdString> remoteUrl;
    Member<FileChange> localType;
    Member<FileChange> remoteType;
    Member<DiffHandles> handles;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::path))
            path.set(scanner.string());
        else if (is(name, stateKeys::remoteUrl))
            remoteUrl.set(scanner.string());
        else if (is(name, stateKeys::localType))
            localType.set(readFileChange(scanner));
        else if (is(name, stateKeys::remoteType))
            remoteType.set(readFileChange(scanner));
        else if (is(name, stateKeys::handles))
            handles.set(readHandles(scanner));
        else
            throw RowScanner::NotPlain();
    });
    return {path.required(), remoteUrl.required(), localType.required(), remoteType.required(),
            handles.orEmpty()};
}

std::vector<ConflictData> readConflicts(RowScanner& scanner) {
    std::vector<ConflictData> conflicts;
    readList(scanner, [&] { conflicts.push_back(readConflict(scanner)); });
    return conflicts;
}

State readState(RowScanner& scanner) {
    Member<Head> head;
    Member<std::vector<StagedFile>> stagedFiles;
    Member<std::map<OdString, OdString>> renames;
    Member<std::map<OdString, IndexData>> index;
    Member<std::vector<ConflictData>> conflicts;
    readObject(scanner, [&](std::string_view name) {
        if (is(name, stateKeys::head))
            head.set(readHead(scanner));
        else if (is(name, stateKeys::stagedFiles))
            stagedFiles.set(readStagedFiles(scanner));
        else if (is(name, stateKeys::renames))
            renames.set(readRenames(scanner));
        else if (is(name, stateKeys::index))
            index.set(readIndex(scanner));
        else if (is(name, stateKeys::conflicts))
            conflicts.set(readConflicts(scanner));
        else
            throw RowScanner::NotPlain();
    });
    return {head.required(), stagedFiles.orEmpty(), renames.orEmpty(), index.orEmpty(),
            conflicts.orEmpty()};
}

}  // namespace

std::optional<State> readRows(std::string_view bytesUtf8) try {
    RowScanner scanner(bytesUtf8);
    return readState(scanner);
} catch (const RowScanner::NotPlain&) {
    return std::nullopt;
}

}  // namespace common
