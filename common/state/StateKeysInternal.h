#pragma once

/// The names of the members of the state file.
///
/// These are plain constants, not objects: a host may let go of what it has when the process ends,
/// after everything that this library would have to destroy.
namespace common::stateKeys {

inline constexpr wchar_t head[] = L"head";
inline constexpr wchar_t reference[] = L"reference";
inline constexpr wchar_t commit[] = L"commit";

inline constexpr wchar_t stagedFiles[] = L"staged_files";
inline constexpr wchar_t path[] = L"path";
inline constexpr wchar_t fileChange[] = L"file_change";

inline constexpr wchar_t renames[] = L"renames";
inline constexpr wchar_t newPath[] = L"new";
inline constexpr wchar_t previousPath[] = L"previous";

inline constexpr wchar_t index[] = L"index";
inline constexpr wchar_t entry[] = L"data";
inline constexpr wchar_t lastChecked[] = L"last_checked";
inline constexpr wchar_t modified[] = L"modified";

inline constexpr wchar_t conflicts[] = L"conflicts";
inline constexpr wchar_t remoteUrl[] = L"remote_url";
inline constexpr wchar_t localType[] = L"local_type";
inline constexpr wchar_t remoteType[] = L"remote_type";
inline constexpr wchar_t handles[] = L"handles";
inline constexpr wchar_t locallyRemoved[] = L"locally_removed";
inline constexpr wchar_t remotelyRemoved[] = L"remotely_removed";
inline constexpr wchar_t modifiedBlocks[] = L"modified_blocks";

}  // namespace common::stateKeys
