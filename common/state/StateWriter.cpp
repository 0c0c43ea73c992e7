#include <common/base/MessageInternal.h>
#include <common/json/RowTextInternal.h>
#include <common/state/PlatformInternal.h>
#include <common/state/StateFile.h>
#include <common/state/StateKeysInternal.h>
#include <common/state/StateWriterInternal.h>
#include <platform/ut/TextFile.h>

#include <string_view>
#include <utility>

namespace common {

namespace {

void writeHead(const Head& head, RowText& text) {
    text.openObject();
    if (head.commit) {
        text.name(stateKeys::commit);
        text.integer(*head.commit);
    }
    text.name(stateKeys::reference);
    text.string(head.reference);
    text.closeObject();
}

void writeMember(std::wstring_view key, const OdString& value, RowText& text) {
    text.name(key);
    text.string(value);
}

Expected<void> writeMember(std::wstring_view key, FileChange change, RowText& text) {
    const Expected<OdString> code = toString(change);
    if (!code)
        return code.error();
    writeMember(key, *code, text);
    return {};
}

Expected<void> writeStagedFile(const StagedFile& file, RowText& text) {
    text.openObject();
    if (Expected<void> change = writeMember(stateKeys::fileChange, file.change, text); !change)
        return change;
    writeMember(stateKeys::path, file.path, text);
    text.closeObject();
    return {};
}

Expected<void> writeRename(const std::pair<const OdString, OdString>& rename, RowText& text) {
    text.openObject();
    writeMember(stateKeys::newPath, rename.first, text);
    writeMember(stateKeys::previousPath, rename.second, text);
    text.closeObject();
    return {};
}

Expected<void> writeIndexEntry(const std::pair<const OdString, IndexData>& entry, RowText& text) {
    text.openObject();
    text.name(stateKeys::entry);
    text.openObject();
    text.name(stateKeys::lastChecked);
    text.integer(entry.second.lastChecked);
    text.name(stateKeys::modified);
    text.boolean(entry.second.modified);
    text.closeObject();
    writeMember(stateKeys::path, entry.first, text);
    text.closeObject();
    return {};
}

void writeHandleList(std::wstring_view key, const OdArray<OdDbHandle>& handles, RowText& text) {
    if (handles.empty())
        return;
    text.name(key);
    text.openArray();
    for (const OdDbHandle& handle : handles) {
        text.element();
        text.string(handle.ascii());
    }
    text.closeArray();
}

void writeHandles(const DiffHandles& handles, RowText& text) {
    text.name(stateKeys::handles);
    text.openObject();
    writeHandleList(stateKeys::locallyRemoved, handles.locallyRemoved, text);
    writeHandleList(stateKeys::modified, handles.modified, text);
    writeHandleList(stateKeys::modifiedBlocks, handles.modifiedBlocks, text);
    writeHandleList(stateKeys::remotelyRemoved, handles.remotelyRemoved, text);
    text.closeObject();
}

Expected<void> writeConflict(const ConflictData& conflict, RowText& text) {
    text.openObject();
    if (conflict.handles.hasHandles())
        writeHandles(conflict.handles, text);
    if (Expected<void> local = writeMember(stateKeys::localType, conflict.localType, text); !local)
        return local;
    writeMember(stateKeys::path, conflict.path, text);
    if (Expected<void> remote = writeMember(stateKeys::remoteType, conflict.remoteType, text);
        !remote)
        return remote;
    writeMember(stateKeys::remoteUrl, conflict.remoteUrl, text);
    text.closeObject();
    return {};
}

/// A list without elements is left out of the file.
template <class Container, class WriteElement>
Expected<void> writeList(std::wstring_view key, const Container& container,
                         WriteElement writeElement, RowText& text) {
    if (container.empty())
        return {};
    text.name(key);
    text.openArray();
    for (const auto& element : container) {
        text.element();
        if (Expected<void> written = writeElement(element, text); !written)
            return written;
    }
    text.closeArray();
    return {};
}

/// The members of each object in the order of their names, as the JSON writer has them.
Expected<void> writeRows(const State& state, RowText& text) {
    text.openObject();
    if (auto list = writeList(stateKeys::conflicts, state.conflicts, writeConflict, text); !list)
        return list;
    text.name(stateKeys::head);
    writeHead(state.head, text);
    if (auto list = writeList(stateKeys::index, state.index, writeIndexEntry, text); !list)
        return list;
    if (auto list = writeList(stateKeys::renames, state.renames, writeRename, text); !list)
        return list;
    if (auto list = writeList(stateKeys::stagedFiles, state.stagedFiles, writeStagedFile, text);
        !list)
        return list;
    text.closeObject();
    text.finish();
    return {};
}

}  // namespace

ErrorMessage unexpectedStateError() {
    // The text speaks of deserializing although it is the writing that failed; it is kept so.
    return translatedError(L"An unexpected error occurred while deserializing the state file.");
}

Expected<void> replaceState(const State& state, const OdString& target,
                            const OdString& statePath) try {
    ut::TextFile file(target);
    constexpr auto handOver =
        isPlatformBundled ? RowText::HandOver::inPieces : RowText::HandOver::asOneLine;
    RowText text(file, handOver);
    if (Expected<void> written = writeRows(state, text); !written)
        return written;
    if (!file.write())
        return translatedError(L"Error writing to file '%ls'", statePath);
    return {};
} catch (...) {
    return unexpectedStateError();
}

Expected<void> writeState(const State& state, const OdString& statePath) try {
    return replaceState(state, statePath, statePath);
} catch (...) {
    // Not even the message found memory.
    return ErrorMessage();
}

}  // namespace common
