#pragma once

/// The names of the members of the server's records.
///
/// These are plain constants, not objects: a host may let go of what it has when the process ends,
/// after everything that this library would have to destroy.
namespace common::recordKeys {

inline constexpr wchar_t annotation[] = L"annotation";
inline constexpr wchar_t author[] = L"author";
inline constexpr wchar_t commandVersion[] = L"commandVersion";
inline constexpr wchar_t commitHash[] = L"commitHash";
inline constexpr wchar_t commitNo[] = L"commitNo";
inline constexpr wchar_t commits[] = L"commits";
inline constexpr wchar_t date[] = L"date";
inline constexpr wchar_t files[] = L"files";
inline constexpr wchar_t hash[] = L"hash";
inline constexpr wchar_t id[] = L"id";
inline constexpr wchar_t message[] = L"message";
inline constexpr wchar_t name[] = L"name";
inline constexpr wchar_t parentsHashes[] = L"parentsHashes";
inline constexpr wchar_t path[] = L"path";
inline constexpr wchar_t previousPath[] = L"previousPath";
inline constexpr wchar_t refType[] = L"refType";
inline constexpr wchar_t references[] = L"references";
inline constexpr wchar_t repository[] = L"repository";
inline constexpr wchar_t storagePath[] = L"storagePath";

}  // namespace common::recordKeys
