#include <common/base/MessageInternal.h>
#include <common/json/JsonAccess.h>
#include <common/json/ParseObjectInternal.h>
#include <common/json/Value.h>
#include <common/state/PlatformInternal.h>
#include <common/state/StateFile.h>
#include <common/state/StateKeysInternal.h>
#include <common/state/StateRowsInternal.h>
#include <platform/ut/File.h>
#include <platform/ut/ReadEntireFile.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace common {

namespace {

using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

/// What a message says was being read, where there is nothing to say beyond the member's name.
constexpr const wchar_t* noContext = L"";

/// Turns one element of a list into a part of the state. Missing members and members of the wrong
/// type are thrown; the rest is returned.
using ElementReader = Expected<void> (*)(const Object& element, State& state);

/// One of the lists at the top level of the file.
struct List {
    const wchar_t* key;
    const wchar_t* elementContext;
    ElementReader readElement;
};

Expected<Head> readHead(const Object& file) {
    const Object& object = getObjectValue(file, stateKeys::head, noContext);
    if (!hasKey(object, stateKeys::reference))
        return translatedError(L"HEAD does not point to a branch");
    Head head;
    head.reference = getStringValue(object, stateKeys::reference, noContext);
    // Odd on purpose: "commit" only tells that there is a number, which is then that of "head".
    if (hasKey(object, stateKeys::commit))
        head.commit = getInt64Value(object, stateKeys::head, noContext);
    return head;
}

Expected<FileChange> readFileChange(const Object& object, const OdString& key) {
    return toFileChange(getStringValue(object, key, noContext));
}

Expected<void> readStagedFile(const Object& element, State& state) {
    const OdString path = getStringValue(element, stateKeys::path, noContext);
    const Expected<FileChange> change = readFileChange(element, stateKeys::fileChange);
    if (!change)
        return change.error();
    state.stagedFiles.emplace_back(path, *change);
    return {};
}

Expected<void> readRename(const Object& element, State& state) {
    OdString newPath = getStringValue(element, stateKeys::newPath, noContext);
    OdString previousPath = getStringValue(element, stateKeys::previousPath, noContext);
    // The first of equal paths stays.
    state.renames.try_emplace(state.renames.end(), std::move(newPath), std::move(previousPath));
    return {};
}

Expected<void> readIndexEntry(const Object& element, State& state) {
    OdString path = getStringValue(element, stateKeys::path, noContext);
    const Object& object = getObjectValue(element, stateKeys::entry, noContext);
    IndexData entry;
    entry.lastChecked = getInt64Value(object, stateKeys::lastChecked, noContext);
    entry.modified = getBoolValue(object, stateKeys::modified, noContext);
    // The first of equal paths stays. Files are written in the map's order, so the end is the
    // place.
    state.index.try_emplace(state.index.end(), std::move(path), entry);
    return {};
}

OdArray<OdDbHandle> readHandleList(const Object& object, const OdString& key) {
    OdArray<OdDbHandle> handles;
    if (!hasKey(object, key))
        return handles;
    for (const Value& element : getArrayValue(object, key, noContext))
        handles.push_back(OdDbHandle(getStringValue(element)));
    return handles;
}

DiffHandles readHandles(const Object& conflict) {
    DiffHandles handles;
    if (!hasKey(conflict, stateKeys::handles))
        return handles;
    const Object& object = getObjectValue(conflict, stateKeys::handles, noContext);
    handles.modified = readHandleList(object, stateKeys::modified);
    handles.locallyRemoved = readHandleList(object, stateKeys::locallyRemoved);
    handles.remotelyRemoved = readHandleList(object, stateKeys::remotelyRemoved);
    handles.modifiedBlocks = readHandleList(object, stateKeys::modifiedBlocks);
    return handles;
}

Expected<void> readConflict(const Object& element, State& state) {
    const OdString path = getStringValue(element, stateKeys::path, noContext);
    const OdString remoteUrl = getStringValue(element, stateKeys::remoteUrl, noContext);
    const Expected<FileChange> localType = readFileChange(element, stateKeys::localType);
    if (!localType)
        return localType.error();
    const Expected<FileChange> remoteType = readFileChange(element, stateKeys::remoteType);
    if (!remoteType)
        return remoteType.error();
    state.conflicts.emplace_back(path, remoteUrl, *localType, *remoteType, readHandles(element));
    return {};
}

Expected<void> readElement(const Value& element, const List& list, State& state) {
    if (element.type() != Value_type::object)
        return composeMessage(element, Value_type::object, list.elementContext);
    return list.readElement(element.getObject(), state);
}

Expected<void> readList(Object& file, const List& list, State& state) {
    const auto member = file.find(list.key);
    if (member == file.end())
        return {};
    checkType(member->second, Value_type::array, list.key, list.key);
    for (Value& element : member->second.getArray()) {
        Expected<void> result = readElement(element, list, state);
        if (!result)
            return result;
        // Elements are freed one by one, so that a large state is not in memory twice.
        element = Value();
    }
    return {};
}

/// Reads a file of the usual form, which is by far the quickest way. Nothing for every other file,
/// and for one that cannot be read.
std::optional<State> readUsualFile(const OdString& statePath) {
    ut::File file;
    // No byte gives more than one unit, so a file of this size is no longer than a text may be.
    constexpr std::int64_t largestSizeBytes = std::numeric_limits<std::int32_t>::max();
    if (!file.open(statePath) || file.length() > largestSizeBytes)
        return std::nullopt;
    const auto sizeBytes = static_cast<std::size_t>(file.length());
    const auto bytes = std::make_unique_for_overwrite<char[]>(sizeBytes);
    if (file.read(bytes.get(), sizeBytes) != sizeBytes)
        return std::nullopt;
    return readRows({bytes.get(), sizeBytes});
}

/// Reads any file, and finds the words for what is wrong with it.
Expected<State> readAnyFile(const OdString& statePath) {
    Object file = parseObject(ut::readEntireFile(statePath));
    if (!hasKey(file, stateKeys::head))
        return translatedError(L"State does not contain HEAD.");
    Expected<Head> head = readHead(file);
    if (!head)
        return std::move(head).error();

    State state;
    state.head = std::move(*head);
    // The order decides which error of a file with several is told.
    const List lists[] = {
        {stateKeys::stagedFiles, L"parsing json vector.", readStagedFile},
        {stateKeys::renames, L"parsing json map.", readRename},
        {stateKeys::index, L"parsing json map.", readIndexEntry},
        {stateKeys::conflicts, L"parsing json vector.", readConflict},
    };
    for (const List& list : lists) {
        Expected<void> result = readList(file, list, state);
        if (!result)
            return std::move(result).error();
    }
    return state;
}

}  // namespace

Expected<State> deserialize(const OdString& statePath) {
    if constexpr (isPlatformBundled) {
        if (std::optional<State> state = readUsualFile(statePath))
            return std::move(*state);
    }
    return readAnyFile(statePath);
}

}  // namespace common
