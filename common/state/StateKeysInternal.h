#pragma once

#include <platform/kernel/OdString.h>

/// The names of the members of the state file.
namespace common::stateKeys {

inline const OdString head = L"head";
inline const OdString reference = L"reference";
inline const OdString commit = L"commit";

inline const OdString stagedFiles = L"staged_files";
inline const OdString path = L"path";
inline const OdString fileChange = L"file_change";

inline const OdString renames = L"renames";
inline const OdString newPath = L"new";
inline const OdString previousPath = L"previous";

inline const OdString index = L"index";
inline const OdString entry = L"data";
inline const OdString lastChecked = L"last_checked";
inline const OdString modified = L"modified";

inline const OdString conflicts = L"conflicts";
inline const OdString remoteUrl = L"remote_url";
inline const OdString localType = L"local_type";
inline const OdString remoteType = L"remote_type";
inline const OdString handles = L"handles";
inline const OdString locallyRemoved = L"locally_removed";
inline const OdString remotelyRemoved = L"remotely_removed";
inline const OdString modifiedBlocks = L"modified_blocks";

}  // namespace common::stateKeys
