#include <common/base/MessageInternal.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <common/state/StateFile.h>
#include <common/state/StateKeysInternal.h>
#include <platform/ut/TextFile.h>

#include <utility>

namespace common {

namespace {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;

void add(Object& object, const OdString& key, Value value) {
    object.emplace(key.toWide(), std::move(value));
}

/// Lists without elements are left out of the file, wherever they stand.
void addUnlessEmpty(Object& object, const OdString& key, Array elements) {
    if (!elements.empty())
        add(object, key, std::move(elements));
}

Object headObject(const Head& head) {
    Object object;
    add(object, stateKeys::reference, head.reference.toWide());
    if (head.commit)
        add(object, stateKeys::commit, *head.commit);
    return object;
}

Expected<Object> stagedFileObject(const StagedFile& file) {
    const Expected<OdString> change = toString(file.change);
    if (!change)
        return change.error();
    Object object;
    add(object, stateKeys::path, file.path.toWide());
    add(object, stateKeys::fileChange, change->toWide());
    return object;
}

Expected<Object> renameObject(const std::pair<const OdString, OdString>& rename) {
    Object object;
    add(object, stateKeys::newPath, rename.first.toWide());
    add(object, stateKeys::previousPath, rename.second.toWide());
    return object;
}

Expected<Object> indexObject(const std::pair<const OdString, IndexData>& entry) {
    Object times;
    add(times, stateKeys::lastChecked, entry.second.lastChecked);
    add(times, stateKeys::modified, entry.second.modified);
    Object object;
    add(object, stateKeys::path, entry.first.toWide());
    add(object, stateKeys::entry, std::move(times));
    return object;
}

Array handleArray(const OdArray<OdDbHandle>& handles) {
    Array elements;
    elements.reserve(handles.size());
    for (const OdDbHandle& handle : handles)
        elements.emplace_back(handle.ascii().toWide());
    return elements;
}

Object handlesObject(const DiffHandles& handles) {
    Object object;
    addUnlessEmpty(object, stateKeys::modified, handleArray(handles.modified));
    addUnlessEmpty(object, stateKeys::locallyRemoved, handleArray(handles.locallyRemoved));
    addUnlessEmpty(object, stateKeys::remotelyRemoved, handleArray(handles.remotelyRemoved));
    addUnlessEmpty(object, stateKeys::modifiedBlocks, handleArray(handles.modifiedBlocks));
    return object;
}

Expected<Object> conflictObject(const ConflictData& conflict) {
    const Expected<OdString> localType = toString(conflict.localType);
    if (!localType)
        return localType.error();
    const Expected<OdString> remoteType = toString(conflict.remoteType);
    if (!remoteType)
        return remoteType.error();
    Object object;
    add(object, stateKeys::path, conflict.path.toWide());
    add(object, stateKeys::remoteUrl, conflict.remoteUrl.toWide());
    add(object, stateKeys::localType, localType->toWide());
    add(object, stateKeys::remoteType, remoteType->toWide());
    if (conflict.handles.hasHandles())
        add(object, stateKeys::handles, handlesObject(conflict.handles));
    return object;
}

template <class Container, class ToObject>
Expected<void> addList(Object& file, const OdString& key, const Container& container,
                       ToObject toObject) {
    Array elements;
    elements.reserve(container.size());
    for (const auto& element : container) {
        Expected<Object> object = toObject(element);
        if (!object)
            return std::move(object).error();
        elements.emplace_back(std::move(*object));
    }
    addUnlessEmpty(file, key, std::move(elements));
    return {};
}

Expected<Object> stateObject(const State& state) {
    Object file;
    add(file, stateKeys::head, headObject(state.head));
    if (auto added = addList(file, stateKeys::stagedFiles, state.stagedFiles, stagedFileObject);
        !added)
        return added.error();
    if (auto added = addList(file, stateKeys::renames, state.renames, renameObject); !added)
        return added.error();
    if (auto added = addList(file, stateKeys::index, state.index, indexObject); !added)
        return added.error();
    if (auto added = addList(file, stateKeys::conflicts, state.conflicts, conflictObject); !added)
        return added.error();
    return file;
}

/// The tree lives in here only, so that it is gone before the text is written.
Expected<OdString> stateText(const State& state) {
    Expected<Object> file = stateObject(state);
    if (!file)
        return std::move(file).error();
    return OdString(jsonlib::json::write(Value(std::move(*file))));
}

}  // namespace

Expected<void> writeState(const State& state, const OdString& statePath) try {
    const Expected<OdString> text = stateText(state);
    if (!text)
        return text.error();
    ut::TextFile file(statePath);
    file.addLine(*text);
    if (!file.write())
        return translatedError(L"Error writing to file '%ls'", statePath);
    return {};
} catch (...) {
    // The text speaks of deserializing although it is the writing that failed; it is kept so.
    return translatedError(L"An unexpected error occurred while deserializing the state file.");
}

}  // namespace common
