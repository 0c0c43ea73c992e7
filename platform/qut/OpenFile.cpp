#include <platform/qut/OpenFile.h>
#include <platform/ut/RegularFileInternal.h>

#include <fcntl.h>
#include <unistd.h>

namespace qut {

namespace {

constexpr mode_t permissionsOfANewFile = 0666;

int accessFlags(QIODevice::OpenMode mode) {
    if (!mode.testFlag(QIODevice::WriteOnly))
        return O_RDONLY;
    return mode.testFlag(QIODevice::ReadOnly) ? O_RDWR : O_WRONLY;
}

int creationFlags(QIODevice::OpenMode mode) {
    if (!mode.testFlag(QIODevice::WriteOnly))
        return 0;
    int flags = mode.testFlag(QIODevice::ExistingOnly) ? 0 : O_CREAT;
    if (mode.testFlag(QIODevice::NewOnly))
        flags |= O_EXCL;
    if (mode.testFlag(QIODevice::Append))
        return flags | O_APPEND;
    const bool keepsContents = mode.testFlag(QIODevice::ReadOnly);
    return keepsContents && !mode.testFlag(QIODevice::Truncate) ? flags : flags | O_TRUNC;
}

}  // namespace

bool openFile(QFile& file, const OdString& path, QIODevice::OpenMode mode) {
    if (mode.testFlag(QIODevice::Append))
        mode |= QIODevice::WriteOnly;
    // Asked before the file is touched: Qt would refuse only when it is already emptied.
    if (file.isOpen() || (mode & QIODevice::ReadWrite) == 0)
        return false;
    ut::OpenedFile opened =
        ut::openNoFolder(path, accessFlags(mode) | creationFlags(mode), permissionsOfANewFile);
    if (!opened.handle.isOpen())
        return false;
    // Creating is done; Qt warns about these two when it is given a descriptor.
    mode &= ~QIODevice::OpenMode(QIODevice::NewOnly | QIODevice::ExistingOnly);
    // A pipe has no end to go to, and the descriptor appends without Qt.
    if (lseek(opened.handle.number(), 0, SEEK_CUR) < 0)
        mode &= ~QIODevice::OpenMode(QIODevice::Append);
    if (!file.open(opened.handle.number(), mode, QFileDevice::AutoCloseHandle))
        return false;
    static_cast<void>(opened.handle.giveAway());
    return true;
}

}  // namespace qut
