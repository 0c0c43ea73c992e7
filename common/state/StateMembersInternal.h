#pragma once

#include <common/state/State.h>

#include <cstddef>
#include <functional>
#include <string_view>
#include <tuple>
#include <utility>

/// What the state file consists of: each object's members with their names and with where their
/// contents stand in the state. The three ways between file and state (row by row, by a tree of
/// JSON values, and back) go by these tables, so that a new member is one line here; how a content
/// of some type is read or written, each way knows by itself.
namespace common {

/// Whether a file without the member is wrong. A content that may be missing is not written when
/// there is nothing in it.
enum class Presence { required, unlessEmpty };

/// `Content` leads from a row, which is one object of the file, to what the member says of it.
template <class Content>
struct StateMember {
    std::wstring_view name;
    Presence presence = Presence::required;
    Content content;

    template <class Row>
    constexpr auto& of(Row& row) const {
        return std::invoke(content, row);
    }
};
// clang 14 does not find it by itself.
template <class Content>
StateMember(std::wstring_view, Presence, Content) -> StateMember<Content>;

/// Renames and the index are maps, whose rows are their elements.
struct KeyOfRow {
    constexpr auto& operator()(auto& row) const { return row.first; }
};
struct ValueOfRow {
    constexpr auto& operator()(auto& row) const { return row.second; }
};
using RenameRow = std::pair<OdString, OdString>;
using IndexRow = std::pair<OdString, IndexData>;

/// The members of a row, in the order in which a tree is read: it decides which error of a file
/// with several is told. They are written in the order of their names.
///
/// All of it are constants, not objects: a host may let go of what it has when the process ends,
/// after everything that this library would have to destroy.
template <class Row>
inline constexpr std::tuple<> stateMembers = {};

template <>
inline constexpr std::tuple stateMembers<StagedFile> = {
    StateMember{L"path", Presence::required, &StagedFile::path},
    StateMember{L"file_change", Presence::required, &StagedFile::change},
};

template <>
inline constexpr std::tuple stateMembers<RenameRow> = {
    StateMember{L"new", Presence::required, KeyOfRow()},
    StateMember{L"previous", Presence::required, ValueOfRow()},
};

template <>
inline constexpr std::tuple stateMembers<IndexRow> = {
    StateMember{L"path", Presence::required, KeyOfRow()},
    StateMember{L"data", Presence::required, ValueOfRow()},
};

template <>
inline constexpr std::tuple stateMembers<IndexData> = {
    StateMember{L"last_checked", Presence::required, &IndexData::lastChecked},
    StateMember{L"modified", Presence::required, &IndexData::modified},
};

template <>
inline constexpr std::tuple stateMembers<DiffHandles> = {
    StateMember{L"modified", Presence::unlessEmpty, &DiffHandles::modified},
    StateMember{L"locally_removed", Presence::unlessEmpty, &DiffHandles::locallyRemoved},
    StateMember{L"remotely_removed", Presence::unlessEmpty, &DiffHandles::remotelyRemoved},
    StateMember{L"modified_blocks", Presence::unlessEmpty, &DiffHandles::modifiedBlocks},
};

template <>
inline constexpr std::tuple stateMembers<ConflictData> = {
    StateMember{L"path", Presence::required, &ConflictData::path},
    StateMember{L"remote_url", Presence::required, &ConflictData::remoteUrl},
    StateMember{L"local_type", Presence::required, &ConflictData::localType},
    StateMember{L"remote_type", Presence::required, &ConflictData::remoteType},
    StateMember{L"handles", Presence::unlessEmpty, &ConflictData::handles},
};

/// The head follows rules of its own, and each way knows them.
namespace headMembers {
inline constexpr std::wstring_view head = L"head";
inline constexpr std::wstring_view reference = L"reference";
inline constexpr std::wstring_view commit = L"commit";
}  // namespace headMembers

template <>
inline constexpr std::tuple stateMembers<State> = {
    StateMember{headMembers::head, Presence::required, &State::head},
    StateMember{L"staged_files", Presence::unlessEmpty, &State::stagedFiles},
    StateMember{L"renames", Presence::unlessEmpty, &State::renames},
    StateMember{L"index", Presence::unlessEmpty, &State::index},
    StateMember{L"conflicts", Presence::unlessEmpty, &State::conflicts},
};

template <class Row>
inline constexpr std::size_t memberCount = std::tuple_size_v<decltype(stateMembers<Row>)>;

/// A row of which nothing is read yet.
template <class Row>
Row emptyRow() {
    return Row();
}
template <>
inline StagedFile emptyRow() {
    return {OdString(), FileChange::added};
}
template <>
inline ConflictData emptyRow() {
    return {OdString(), OdString(), FileChange::added, FileChange::added};
}

}  // namespace common
