#pragma once

#include <platform/kernel/OdString.h>

/// The names of the members of the server's records.
namespace common::recordKeys {

inline const OdString annotation = L"annotation";
inline const OdString author = L"author";
inline const OdString commandVersion = L"commandVersion";
inline const OdString commitHash = L"commitHash";
inline const OdString commitNo = L"commitNo";
inline const OdString commits = L"commits";
inline const OdString date = L"date";
inline const OdString files = L"files";
inline const OdString hash = L"hash";
inline const OdString id = L"id";
inline const OdString message = L"message";
inline const OdString name = L"name";
inline const OdString parentsHashes = L"parentsHashes";
inline const OdString path = L"path";
inline const OdString previousPath = L"previousPath";
inline const OdString refType = L"refType";
inline const OdString references = L"references";
inline const OdString repository = L"repository";
inline const OdString storagePath = L"storagePath";

}  // namespace common::recordKeys
