#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>
#include <platform/ut/DateTime.h>

namespace ut {

/// A path, and what the file system says of the thing it names. The path is text: nothing is read
/// before a question needs it. A path that holds a NUL names nothing; every question about it is
/// answered as for a missing file.
class QRV_PLATFORM_EXPORT FileName {
public:
    FileName() = default;
    /// Takes the path as it is.
    explicit FileName(const OdString& path);
    /// The file `baseName`.`extension` in `folder`; without extension also without the dot.
    FileName(const OdString& folder, const OdString& baseName, const OdString& extension);

    /// What separates the components of a path: "/".
    static wchar_t getPathSeparator();
    /// Whether the unit is one that separates components.
    static bool isPathSeparator(wchar_t unit);

    /// Makes the folder `path` with the permission bits `mode`, less the process's mask; with
    /// `withParents` also the missing folders above it. True also when the folder is there already;
    /// false when it cannot be made, for example because a file stands in the way. Folders already
    /// made stay then.
    static bool mkdir(const OdString& path, int mode, bool withParents);

    /// The path as it was given or made.
    OdString getFullPath() const { return path_; }
    /// Makes a relative path absolute, from the current folder. "." is left out, and double
    /// separators become one; ".." stays, for behind a link to a folder it names that folder's own
    /// parent. An empty path stays empty; a relative one stays as it is when the current folder
    /// cannot be asked.
    void makeAbsolute();

    /// False when certainly nothing of the wanted kinds has this path; a link to nothing is
    /// nothing. True also when nobody could look, because of the disk or of missing rights: what
    /// asks wants to make something where nothing is, and must not do so over what it could not
    /// see. `kinds` is a set of bits; the only one used is 0x1FFF, any kind.
    bool exists(int kinds) const;
    /// The number of folders on the way to what the path names, that one included, and the one in
    /// which it begins: the root, or for a relative path the current folder. 0 for the empty path.
    int getDirCount() const;
    /// Removes the last of these: "a/b" becomes "a", then ".", then empty; "/a" becomes "/", then
    /// empty.
    void removeLastDir();
    /// True when the path names a folder in which this process may make files.
    bool isDirWritable() const;

    /// What stands behind the last dot of the last component; empty when there is no dot, or when
    /// it is that component's first or last character.
    OdString getExt() const;
    /// Whether `getExt` gives anything.
    bool hasExt() const { return !getExt().isEmpty(); }

    /// Reads the times of access, of the last change of contents and of creation; a null pointer
    /// leaves one out. False, and nothing changed, when the file cannot be asked. Linux keeps no
    /// time of creation that every file system has: the time of the last change of status stands
    /// for it.
    bool getTimes(DateTime* access, DateTime* modification, DateTime* creation) const;

private:
    OdString path_;
};

}  // namespace ut
