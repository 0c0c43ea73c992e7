#pragma once

#include <platform/kernel/OdString.h>

#include <string>

/// What lies where in a repository: paths below its root, in bytes, as `sys::Folder` takes them.
/// docs/formats/ describes each file.
namespace qrv::layout {

inline constexpr const char* metadataFolder = ".qrv";
/// Held by whoever changes the repository.
inline constexpr const char* lockPath = ".qrv/lock";
inline constexpr const char* logPath = ".qrv/qrv.log";

inline constexpr const char* statePath = ".qrv/qrv.state";
/// What is known of the working files, so that the next look need not read them.
inline constexpr const char* baselinePath = ".qrv/baseline";

inline constexpr const char* historyPath = ".qrv/qrv.db";
/// Where branches and tags have pointed, from which a lost history is made anew.
inline constexpr const char* referenceRecordPath = ".qrv/references";
/// The records of the commits, for the same.
inline constexpr const char* commitRecordsFolder = ".qrv/commits";

inline constexpr const char* objectsFolder = ".qrv/objects";
/// What `gc` of earlier programs has packed.
inline constexpr const char* oldPackPath = ".qrv/objects.pack";
/// New contents go here, whatever they are.
inline constexpr const char* packsFolder = ".qrv/packs";
/// Of a pack, behind its name.
inline constexpr const char* packEnding = ".pack";
/// The drawing stores.
inline constexpr const char* storesFolder = ".qrv/tf";
/// Of a drawing store, behind its name.
inline constexpr const char* storeEnding = ".tf";

/// The only files in the metadata folder that are working files as well.
inline constexpr const char* propertiesFolder = ".qrv/properties";
inline constexpr const char* ignoreRulesPath = ".qrv/properties/ignore";
inline constexpr const char* projectNamePath = ".qrv/properties/project_name";

/// An object, by the digest of its contents.
std::string objectPath(const std::string& digest);
/// A pack, by its name.
std::string packPath(const std::string& name);
std::string drawingStorePath(const OdString& store);
std::string commitRecordPath(const OdString& hash);
/// Where a history that cannot be read is put aside; there can be several.
std::string damagedHistoryPath(int number);

}  // namespace qrv::layout
