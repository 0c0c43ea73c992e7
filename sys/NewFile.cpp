#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/NewFile.h>
#include <sys/StatusInternal.h>
#include <sys/TransferInternal.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>

namespace sys {

namespace {

// What killed processes left behind may hold a name; so many of them in one folder mean something
// else.
constexpr int namesTried = 1000;

constexpr std::int64_t nsPerSecond = 1000000000;

constexpr std::uint32_t groupBits = 0070;
constexpr std::uint32_t otherBits = 0007;

std::string nextTemporaryName() {
    static std::atomic<unsigned> counter = 0;
    return "." + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".qrv-tmp";
}

std::error_code outcomeOf(int result) {
    return result < 0 ? calls::lastError() : std::error_code();
}

/// What is answered to who may not give the file away, and by a file system that keeps no owners.
bool isRefusal(int errorNumber) {
    return errorNumber == EPERM || errorNumber == EACCES || errorNumber == EINVAL ||
           errorNumber == ENOTSUP;
}

/// Whether the file has the group now. Nothing after a failure that is no refusal.
std::optional<bool> giveTo(int file, uid_t owner, gid_t group) {
    // Who may not give a file away may still give it to a group of their own.
    constexpr auto unchanged = static_cast<uid_t>(-1);
    for (const uid_t newOwner : {owner, unchanged}) {
        if (calls::setOwner(file, newOwner, group) == 0)
            return true;
        if (!isRefusal(errno))
            return std::nullopt;
    }
    return false;
}

// Nothing is asked of a file system that keeps no rights and would refuse: all its files have the
// same.
int giveRights(int file, uid_t owner, gid_t group, std::uint32_t permissions) {
    struct stat status = {};
    if (calls::status(file, status) < 0)
        return -1;
    if (status.st_uid != owner || status.st_gid != group) {
        const std::optional<bool> hasGroup = giveTo(file, owner, group);
        if (!hasGroup)
            return -1;
        // Another group gets no more than everybody.
        if (!*hasGroup)
            permissions = (permissions & ~groupBits) | (permissions & otherBits) << 3U;
    }
    return permissionsOf(status) == permissions ? 0 : calls::setPermissions(file, permissions);
}

// Rounded down also before 1970, for the nanoseconds of the system are never negative.
timespec toSystemTime(std::int64_t ns) {
    const std::int64_t rest = ((ns % nsPerSecond) + nsPerSecond) % nsPerSecond;
    return {.tv_sec = (ns - rest) / nsPerSecond, .tv_nsec = rest};
}

}  // namespace

NewFile::NewFile(std::shared_ptr<const Handle> root, std::string folder, std::string name)
    : root_(std::move(root)), folder_(std::move(folder)), name_(std::move(name)) {
}

NewFile::NewFile(NewFile&& other) noexcept {
    *this = std::move(other);
}

NewFile& NewFile::operator=(NewFile&& other) noexcept {
    root_.swap(other.root_);
    std::swap(file_, other.file_);
    folder_.swap(other.folder_);
    temporaryName_.swap(other.temporaryName_);
    name_.swap(other.name_);
    return *this;
}

NewFile::~NewFile() {
    if (temporaryName_.empty())
        return;
    // Takes no memory, which may be what is missing. The failure that led here is what is reported;
    // a second one has nobody to tell.
    Handle opened;
    if (const int folder = openFolder(opened); folder >= 0)
        static_cast<void>(calls::removeFile(folder, temporaryName_));
}

int NewFile::openFolder(Handle& opened) const {
    if (folder_.empty())
        return root_->number();
    opened = openBeneath(root_->number(), folder_, O_PATH | O_DIRECTORY);
    return opened.number();
}

std::string NewFile::pathOf(const std::string& name) const {
    return folder_.empty() ? name : folder_ + '/' + name;
}

std::error_code NewFile::create(std::uint32_t permissions) {
    for (int attempt = 0; attempt < namesTried; ++attempt) {
        // Both texts are made before the file is there: nothing that can throw may stand between a
        // file and its owner.
        std::string name = nextTemporaryName();
        const std::string path = pathOf(name);
        file_ = openBeneath(root_->number(), path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                            permissions);
        if (file_.isOpen()) {
            temporaryName_.swap(name);
            return {};
        }
        if (errno != EEXIST)
            break;
    }
    return calls::lastError();
}

std::error_code NewFile::write(std::span<const char> bytes) {
    return writeAll(file_.number(), bytes);
}

std::error_code NewFile::shareBlocks(const InputFile& source) {
    return outcomeOf(calls::shareBlocks(file_.number(), source.handle_.number()));
}

std::error_code NewFile::close() {
    return file_.close();
}

Outcome<InputFile> NewFile::contents() const {
    Handle file = openBeneath(root_->number(), pathOf(temporaryName_), O_RDONLY | O_NOFOLLOW);
    if (!file.isOpen())
        return calls::lastError();
    return InputFile(std::move(file));
}

template <class Call>
std::error_code NewFile::onOpenFile(Call call) {
    if (file_.isOpen())
        return outcomeOf(call(file_.number()));
    const Outcome<InputFile> again = contents();
    return again ? outcomeOf(call(again->handle_.number())) : again.error();
}

std::error_code NewFile::flush() {
    return onOpenFile([](int file) { return calls::flush(file); });
}

std::error_code NewFile::setModified(std::int64_t modifiedNs) {
    const timespec time = toSystemTime(modifiedNs);
    return onOpenFile([&](int file) { return calls::setModified(file, time); });
}

std::error_code NewFile::setPermissions(std::uint32_t permissions) {
    return onOpenFile([&](int file) { return calls::setPermissions(file, permissions); });
}

std::error_code NewFile::takeRights(std::uint32_t owner, std::uint32_t group,
                                    std::uint32_t permissions) {
    return onOpenFile([&](int file) { return giveRights(file, owner, group, permissions); });
}

std::error_code NewFile::publish(Existing existing) {
    Handle opened;
    const int folder = openFolder(opened);
    if (folder < 0)
        return calls::lastError();
    const int result = existing == Existing::replace
                           ? calls::rename(folder, temporaryName_, folder, name_)
                           : calls::renameToFree(folder, temporaryName_, name_);
    if (result == 0)
        temporaryName_.clear();
    return outcomeOf(result);
}

}  // namespace sys
