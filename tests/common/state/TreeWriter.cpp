#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <tests/common/state/TreeWriter.h>

#include <utility>

namespace qrv_test {

namespace {

using common::ConflictData;
using common::DiffHandles;
using common::FileChange;
using common::StagedFile;
using common::State;
using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;

Value text(const OdString& text) {
    return text.toWide();
}

Value nameOf(FileChange change) {
    return text(toString(change).value());
}

void addUnlessEmpty(Object& object, const wchar_t* key, Array elements) {
    if (!elements.empty())
        object[key] = std::move(elements);
}

Array handleArray(const OdArray<OdDbHandle>& handles) {
    Array elements;
    for (const OdDbHandle& handle : handles)
        elements.push_back(text(handle.ascii()));
    return elements;
}

Object handlesObject(const DiffHandles& handles) {
    Object object;
    addUnlessEmpty(object, L"modified", handleArray(handles.modified));
    addUnlessEmpty(object, L"locally_removed", handleArray(handles.locallyRemoved));
    addUnlessEmpty(object, L"remotely_removed", handleArray(handles.remotelyRemoved));
    addUnlessEmpty(object, L"modified_blocks", handleArray(handles.modifiedBlocks));
    return object;
}

Object conflictObject(const ConflictData& conflict) {
    Object object = {{L"path", text(conflict.path)},
                     {L"remote_url", text(conflict.remoteUrl)},
                     {L"local_type", nameOf(conflict.localType)},
                     {L"remote_type", nameOf(conflict.remoteType)}};
    if (conflict.handles.hasHandles())
        object[L"handles"] = handlesObject(conflict.handles);
    return object;
}

Array stagedFileArray(const State& state) {
    Array elements;
    for (const StagedFile& file : state.stagedFiles)
        elements.emplace_back(
            Object{{L"path", text(file.path)}, {L"file_change", nameOf(file.change)}});
    return elements;
}

Array renameArray(const State& state) {
    Array elements;
    for (const auto& [newPath, previousPath] : state.renames)
        elements.emplace_back(Object{{L"new", text(newPath)}, {L"previous", text(previousPath)}});
    return elements;
}

Array indexArray(const State& state) {
    Array elements;
    for (const auto& [path, entry] : state.index)
        elements.emplace_back(Object{{L"path", text(path)},
                                     {L"data", Object{{L"last_checked", entry.lastChecked},
                                                      {L"modified", entry.modified}}}});
    return elements;
}

Array conflictArray(const State& state) {
    Array elements;
    for (const ConflictData& conflict : state.conflicts)
        elements.emplace_back(conflictObject(conflict));
    return elements;
}

Object headObject(const common::Head& head) {
    Object object{{L"reference", text(head.reference)}};
    if (head.commit)
        object[L"commit"] = *head.commit;
    return object;
}

}  // namespace

std::string treeWritten(const State& state) {
    Object file{{L"head", headObject(state.head)}};
    addUnlessEmpty(file, L"staged_files", stagedFileArray(state));
    addUnlessEmpty(file, L"renames", renameArray(state));
    addUnlessEmpty(file, L"index", indexArray(state));
    addUnlessEmpty(file, L"conflicts", conflictArray(state));
    return OdString(jsonlib::json::write(Value(std::move(file)))).toNarrow();
}

}  // namespace qrv_test
