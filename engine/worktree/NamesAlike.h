#pragma once

#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qrv {

// Names on the disk that a system which ignores letter case and accents takes for one. What cannot
// be listed has no names.

/// Tells of files that are there whether another name beside them is alike. It lists the folders
/// above these files and no others.
class NamesAlike {
public:
    /// The root must live as long.
    explicit NamesAlike(const sys::Folder& root) : root_(root) {}

    /// Whether there is another name in its folder for the file, or in theirs for the folders above
    /// it. Quickest in the order of the paths.
    bool hasOther(const OdString& path);

private:
    using Names = std::set<std::u16string>;

    const Names& repeatedIn(const OdString& folder);
    bool isRepeated(const OdString& path);

    const sys::Folder& root_;
    /// What more than one name is, of the folders above the last path.
    std::map<OdString, Names> repeated_;
    /// The last one in which, and above which, nothing was found.
    std::optional<OdString> fineFolder_;
};

/// Finds files by their paths as a system does that ignores letter case.
class FilesAlike {
public:
    /// The root must live as long.
    explicit FilesAlike(const sys::Folder& root) : root_(root) {}

    /// The paths of what is no folder and is found under `path`, also as it stands; ordered.
    std::vector<OdString> under(const OdString& path);

private:
    using Names = std::multimap<std::u16string, OdString>;

    const Names& namesIn(const OdString& folder);

    const sys::Folder& root_;
    std::map<OdString, Names> names_;
};

}  // namespace qrv
