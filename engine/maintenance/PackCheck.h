#pragma once

#include <common/base/Expected.h>
#include <engine/storage/PackReader.h>
#include <engine/storage/PackSource.h>
#include <sys/Folder.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv {

/// All contents of a pack that its tables tell of, in the order in which they lie in the file.
/// Entries that are impossible are left out; their number is `impossible`.
struct PackContents {
    std::vector<PackedContents> contents;
    std::size_t impossible = 0;
};

/// Fails when the tables cannot be read.
Expected<PackContents> contentsOf(const PackReader& pack);

/// Which of the contents cannot be read as they were stored, by their place in the list: each is
/// read and compared with its digest, on all cores, in little memory. `root` is the folder of the
/// repository, for what they build on; packs of the `ignored` names are as if they were gone.
std::vector<std::size_t> unreadable(const std::vector<PackedContents>& contents,
                                    const sys::Folder& root,
                                    const std::vector<std::string>& ignored = {});

}  // namespace qrv
