#pragma once

#include <sys/Handle.h>
#include <sys/InputFile.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <system_error>

namespace sys {

/// A file that is being written beside the name that it will have. It appears under that name only
/// with `publish`, and then as a whole; without it, its end leaves nothing behind.
///
///     Outcome<NewFile> file = folder.newFile("plans/ground.dxf", 0644);
///     file->write(bytes);
///     file->flush();
///     file->publish(NewFile::Existing::replace);
///
/// Until then its name begins with "." and ends in ".qrv-tmp", which no scan lists below ".qrv" and
/// the next `Folder::removeLeftovers` removes after a crash. Its folder is not held open: any
/// number of files that were closed can wait for `publish`, which fails when the folder has gone or
/// a link has taken its place.
class NewFile {
public:
    enum class Existing {
        replace,  ///< takes the place of a file or link of that name
        keep,     ///< fails with `file_exists` when the name is taken
    };

    NewFile(NewFile&& other) noexcept;
    NewFile& operator=(NewFile&& other) noexcept;
    ~NewFile();

    /// All bytes, or an error.
    [[nodiscard]] std::error_code write(std::span<const char> bytes);
    /// Makes this file share the blocks of `source` without copying. An error means that the file
    /// system cannot do that, and that nothing was written.
    [[nodiscard]] std::error_code shareBlocks(const InputFile& source);
    /// Ends the writing and frees the descriptor. An error means that something written was lost.
    [[nodiscard]] std::error_code close();

    // These do with a closed file as well, which they open again for the moment.
    /// What was written so far, from its beginning.
    Outcome<InputFile> contents() const;
    /// Hands the contents over to the disk.
    [[nodiscard]] std::error_code flush();
    /// The time of modification that the file will have, in nanoseconds since 1970.
    [[nodiscard]] std::error_code setModified(std::int64_t modifiedNs);
    /// Exactly these, whatever the process's mask says.
    [[nodiscard]] std::error_code setPermissions(std::uint32_t permissions);

    /// Those of the file that it is to replace: owner and group as far as the system allows, and
    /// these permissions, of which a group that could not be kept has no more than everybody. Fails
    /// when the system could not do it for another reason than that it is not allowed.
    [[nodiscard]] std::error_code takeRights(std::uint32_t owner, std::uint32_t group,
                                             std::uint32_t permissions);

    /// The file will have this name in its folder instead of the one that it was made for.
    void setName(const std::string& name) { name_ = name; }
    /// Gives the file its name. The folder is not flushed.
    [[nodiscard]] std::error_code publish(Existing existing);

private:
    friend class Folder;

    NewFile(std::shared_ptr<const Handle> root, std::string folder, std::string name);
    /// Makes the file, under a temporary name.
    std::error_code create(std::uint32_t permissions);
    std::string pathOf(const std::string& name) const;
    /// The number of the open folder, negative with the cause in `errno`; `opened` owns it when it
    /// is not the root.
    int openFolder(Handle& opened) const;
    template <class Call>
    std::error_code onOpenFile(Call call);

    // The folder that the paths start from.
    std::shared_ptr<const Handle> root_;
    Handle file_;
    // Relative to the root; empty when it is the root.
    std::string folder_;
    // Empty while there is none: before it is made, and when it was published or moved away.
    std::string temporaryName_;
    std::string name_;
};

}  // namespace sys
