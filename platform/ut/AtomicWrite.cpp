#include <platform/ut/AtomicWriteInternal.h>
#include <platform/ut/DescriptorInternal.h>
#include <platform/ut/SystemCallsInternal.h>
#include <platform/ut/SystemPathInternal.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace ut {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t groupBits = 0070;
constexpr mode_t otherBits = 0007;
constexpr mode_t permissionsOfANewFile = 0666;

// What killed processes left behind may hold a name; so many of them in one folder mean something
// else.
constexpr int namesTried = 1000;

std::string nextTemporaryName() {
    static std::atomic<unsigned> counter = 0;
    return "." + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".qrv-tmp";
}

// A new file under a name of its own, which is removed again unless it is renamed.
class TemporaryFile {
public:
    // Null when none can be made in the open folder.
    static std::unique_ptr<TemporaryFile> create(int folder, mode_t permissions) {
        // Made before the file is there: nothing that can throw may stand between a file and its
        // owner.
        std::unique_ptr<TemporaryFile> file(new TemporaryFile(folder));
        for (int attempt = 0; attempt < namesTried; ++attempt) {
            file->name_ = nextTemporaryName();
            file->descriptor_ = Descriptor(calls::openAt(
                folder, file->name_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, permissions));
            file->isThere_ = file->descriptor_.isOpen();
            if (file->isThere_)
                return file;
            if (errno != EEXIST)
                return nullptr;
        }
        return nullptr;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        // The failure that led here is what is reported; a second one has nobody to tell.
        if (isThere_)
            calls::unlinkAt(folder_, name_);
    }

    // Takes over the owner and group of the old file, where the system allows it, and its
    // permissions. Nothing is asked of a file system that keeps none and would refuse: all its
    // files have the same.
    bool takeOver(const struct stat& old) {
        struct stat status = {};
        if (calls::fstat(descriptor_.get(), status) < 0)
            return false;
        mode_t permissions = old.st_mode & permissionBits;
        if (status.st_uid != old.st_uid || status.st_gid != old.st_gid) {
            const std::optional<bool> hasGroup = takeOwner(old);
            if (!hasGroup)
                return false;
            // Another group gets no more than everybody.
            if (!*hasGroup)
                permissions = (permissions & ~groupBits) | (permissions & otherBits) << 3;
        }
        return (status.st_mode & permissionBits) == permissions ||
               calls::fchmod(descriptor_.get(), permissions) == 0;
    }

    bool write(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = calls::write(descriptor_.get(), bytes.data(), bytes.size());
            if (count <= 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    // Flushed before the rename, or a power cut could leave the new name with nothing behind it.
    bool flushAndClose() { return calls::fsync(descriptor_.get()) == 0 && descriptor_.close(); }

    bool renameTo(const std::string& name) {
        const bool isRenamed = calls::renameAt(folder_, name_, name) == 0;
        isThere_ = !isRenamed;
        return isRenamed;
    }

private:
    explicit TemporaryFile(int folder) : folder_(folder) {}

    // Whether the file has the group now. Nothing after a failure that is no refusal.
    std::optional<bool> takeOwner(const struct stat& old) {
        // Who may not give a file away may still give it to a group of their own.
        for (const uid_t owner : {old.st_uid, uid_t(-1)}) {
            if (calls::fchown(descriptor_.get(), owner, old.st_gid) == 0)
                return true;
            if (errno != EPERM && errno != EACCES && errno != EINVAL && errno != ENOTSUP)
                return std::nullopt;
        }
        return false;
    }

    int folder_;
    std::string name_;
    Descriptor descriptor_;
    bool isThere_ = false;
};

bool flushFolder(int folder) {
    // Some file systems cannot flush a folder and say so with these numbers; they have no better to
    // offer.
    return calls::fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP;
}

// What the new file takes over, if there is an old one, and whether that may be replaced.
struct OldFile {
    bool isReplaceable = false;
    std::optional<struct stat> status;
};

OldFile lookAtOldFile(int folder, const std::string& name) {
    struct stat status = {};
    if (calls::fstatAt(folder, name.c_str(), status, AT_SYMLINK_NOFOLLOW) < 0)
        return {.isReplaceable = errno == ENOENT, .status = std::nullopt};
    if (!S_ISREG(status.st_mode))
        return {.isReplaceable = S_ISLNK(status.st_mode), .status = std::nullopt};
    // The folder alone says whether a file may be replaced. Whoever made it read-only meant what is
    // in it, all the same.
    return {.isReplaceable = calls::accessAt(folder, name, W_OK, AT_EACCESS) == 0,
            .status = status};
}

bool replaceIn(int folder, const std::string& name, std::string_view bytes) {
    const OldFile old = lookAtOldFile(folder, name);
    if (!old.isReplaceable)
        return false;
    const std::unique_ptr<TemporaryFile> file = TemporaryFile::create(
        folder, old.status ? old.status->st_mode & permissionBits : permissionsOfANewFile);
    if (file == nullptr)
        return false;
    if (old.status && !file->takeOver(*old.status))
        return false;
    return file->write(bytes) && file->flushAndClose() && file->renameTo(name) &&
           flushFolder(folder);
}

}  // namespace

bool replaceFile(const OdString& path, std::string_view bytes) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return false;
    const std::size_t nameBegin = systemPath->rfind('/') + 1;  // 0 without a slash
    const std::string folderPath = nameBegin == 0 ? "." : systemPath->substr(0, nameBegin);
    const std::string name = systemPath->substr(nameBegin);
    // All steps go through the open folder, so that one renamed meanwhile is still the same.
    const Descriptor folder(calls::openAt(AT_FDCWD, folderPath, O_RDONLY | O_DIRECTORY));
    return !name.empty() && folder.isOpen() && replaceIn(folder.get(), name, bytes);
}

}  // namespace ut
