#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// A regular file in the metadata folder.
struct MetadataFile {
    /// Of an object its digest, of a drawing store and of a pack its name, of anything else the
    /// path below the root.
    OdString name;
    std::int64_t sizeBytes = 0;
    /// Nanoseconds since 1970.
    std::int64_t modifiedNs = 0;
};

/// What lies in the metadata folder, by the names alone. Every list is ordered by name.
struct MetadataFiles {
    std::vector<MetadataFile> objects;
    std::vector<MetadataFile> stores;
    std::vector<MetadataFile> packs;
    /// New files that a killed process, or one that is at work now, has not finished.
    std::vector<MetadataFile> leftovers;
    /// What is none of these and lies among the objects, the stores or the packs.
    std::vector<OdString> strays;
};

/// Fails when a folder cannot be read, or is none, and when what lies in it cannot be asked for.
Expected<MetadataFiles> listMetadata(const common::RootPath& root, const sys::Folder& folder);

/// The files that a killed process has left in a folder below the root, `relative`; none when it
/// cannot be read.
std::vector<MetadataFile> leftoversIn(const common::RootPath& root, const sys::Folder& folder,
                                      const OdString& relative);

}  // namespace qrv
