#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/database/DatabaseFailureInternal.h>
#include <engine/database/DatabaseFileInternal.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace qrv {

namespace {

/// For all who may use the folder, as far as the process's mask allows.
constexpr std::uint32_t filePermissions = 0666;

/// Behind the name of a journal of several databases, at the end of the file.
constexpr std::array<char, 8> endOfName = {'\xD9', '\xD5', '\x05', '\xF9',
                                           '\x20', '\xA1', '\x63', '\xD7'};

void requireRegularFile(const sys::Folder& folder, const std::string& name, const OdString& path) {
    const sys::Outcome<sys::FileStatus> status = folder.status(name);
    if (status ? status->kind == sys::FileKind::regular : sys::meansAbsent(status.error()))
        return;
    failOnDatabase(path, status ? tr(L"it is not a regular file") : causeOf(status.error()));
}

/// SQLite would read and write them, and go by what they say.
void requireNoLog(const sys::Folder& folder, const std::string& name, const OdString& path) {
    const sys::Outcome<sys::FileStatus> status = folder.status(name);
    if (!status && sys::meansAbsent(status.error()))
        return;
    failOnDatabase(path, status
                             ? tr(L"no command of this program makes such a file, whose contents "
                                  L"would change the database; move it away")
                             : causeOf(status.error()));
}

/// Whether the journal says of itself that it is a part of another one. SQLite looks for that one
/// by its name, which may be any path, and deletes it.
sys::Outcome<bool> namesAnother(const sys::InputFile& journal) {
    const sys::Outcome<sys::FileStamp> stamp = journal.stamp();
    if (!stamp)
        return stamp.error();
    std::array<char, endOfName.size()> end{};
    const auto length = static_cast<std::int64_t>(end.size());
    if (stamp->sizeBytes < length)
        return false;
    const sys::Outcome<std::size_t> count = journal.readAt(stamp->sizeBytes - length, end);
    if (!count)
        return count.error();
    return end == endOfName;
}

void requireOwnJournal(const sys::Folder& folder, const std::string& name, const OdString& path) {
    const sys::Outcome<sys::InputFile> journal = folder.openFile(name);
    if (!journal && sys::meansAbsent(journal.error()))
        return;
    if (!journal)
        failOnDatabase(path, causeOf(journal.error()));
    const sys::Outcome<bool> isPart = namesAnother(*journal);
    const sys::Outcome<std::uint64_t> names = journal->countNames();
    if (!isPart || !names)
        failOnDatabase(path, causeOf(isPart ? names.error() : isPart.error()));
    if (*isPart)
        failOnDatabase(path,
                       tr(L"it names another file, which would be deleted; no command of this "
                          L"program leaves such a journal, so move it away"));
    // None at all when another process has just finished with it.
    if (*names > 1)
        failOnDatabase(path, tr(L"it has a second name, under which it would be written, too"));
}

}  // namespace

void requireOwnFiles(const sys::Folder& folder, const std::string& name, const OdString& path) {
    requireRegularFile(folder, name, path);
    requireNoLog(folder, name + "-wal", path + L"-wal");
    requireNoLog(folder, name + "-shm", path + L"-shm");
    requireOwnJournal(folder, name + "-journal", path + L"-journal");
}

void makeFile(const sys::Folder& folder, const std::string& name, const OdString& path) {
    if (folder.status(name))
        return;
    const std::error_code error = folder.makeFile(name, filePermissions);
    if (error && error != std::errc::file_exists)
        failOnDatabase(path, causeOf(error));
}

}  // namespace qrv
