#include <engine/database/FolderVfsInternal.h>
#include <sys/OpenByPath.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace qrv {

namespace {

constexpr int longestPath = 512;

/// SQLite's own way to the system, which locks and flushes as every other program with SQLite does.
sqlite3_vfs* systemVfs() {
    static sqlite3_vfs* const vfs = [] {
        sqlite3_vfs* const found = sqlite3_vfs_find("unix");
        found->xSetSystemCall(found, "open",
                              reinterpret_cast<sqlite3_syscall_ptr>(&sys::openWithoutWaiting));
        return found;
    }();
    return vfs;
}

}  // namespace

// SQLite calls these, and no exception may reach it.
struct FolderVfs::Calls {
    static const FolderVfs& of(sqlite3_vfs* vfs) {
        return *static_cast<const FolderVfs*>(vfs->pAppData);
    }

    static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags,
                    int* openedFlags) {
        file->pMethods = nullptr;
        const FolderVfs& self = of(vfs);
        const char* const path = self.pathOf(name);
        const bool isDatabase = path == self.databasePath_.c_str();
        const int kind = isDatabase ? SQLITE_OPEN_MAIN_DB : SQLITE_OPEN_MAIN_JOURNAL;
        if (path == nullptr || (flags & kind) == 0)
            return SQLITE_CANTOPEN;
        // Only with this flag would anything be looked for around the name.
        return systemVfs()->xOpen(systemVfs(), path, file, flags & ~SQLITE_OPEN_URI, openedFlags);
    }

    static int remove(sqlite3_vfs* vfs, const char* name, int flushesFolder) {
        const FolderVfs& self = of(vfs);
        if (self.pathOf(name) != self.journalPath_.c_str())
            return SQLITE_IOERR_DELETE;
        return systemVfs()->xDelete(systemVfs(), self.journalPath_.c_str(), flushesFolder);
    }

    static int access(sqlite3_vfs* vfs, const char* name, int flags, int* answer) {
        const FolderVfs& self = of(vfs);
        *answer = 0;
        if (const char* const path = self.pathOf(name))
            return systemVfs()->xAccess(systemVfs(), path, flags, answer);
        // Whether there is a write-ahead log is asked of every database. Any other name stands in
        // a journal, which cannot be played back then.
        return name == self.log_ ? SQLITE_OK : SQLITE_IOERR_ACCESS;
    }

    static int fullPath(sqlite3_vfs* vfs, const char* name, int size, char* path) {
        const std::string& database = of(vfs).database_;
        if (name != database || database.size() >= static_cast<std::size_t>(size))
            return SQLITE_CANTOPEN;
        std::memcpy(path, database.c_str(), database.size() + 1);
        return SQLITE_OK;
    }

    static int randomness(sqlite3_vfs*, int size, char* bytes) {
        return systemVfs()->xRandomness(systemVfs(), size, bytes);
    }
    static int sleep(sqlite3_vfs*, int microseconds) {
        return systemVfs()->xSleep(systemVfs(), microseconds);
    }
    static int currentTime(sqlite3_vfs*, double* julianDay) {
        return systemVfs()->xCurrentTime(systemVfs(), julianDay);
    }
    static int lastError(sqlite3_vfs*, int size, char* text) {
        return systemVfs()->xGetLastError(systemVfs(), size, text);
    }
};

FolderVfs::FolderVfs(const sys::Folder& folder, const std::string& name)
    : folder_(folder),
      database_(name),
      journal_(name + "-journal"),
      log_(name + "-wal"),
      databasePath_(folder.pathThroughHandle(database_)),
      journalPath_(folder.pathThroughHandle(journal_)) {
    std::array<char, 40> unique{};
    static_cast<void>(
        std::snprintf(unique.data(), unique.size(), "qrv-%p", static_cast<void*>(this)));
    name_ = unique.data();
    vfs_.iVersion = 1;
    vfs_.szOsFile = systemVfs()->szOsFile;
    vfs_.mxPathname = longestPath;
    vfs_.zName = name_.c_str();
    vfs_.pAppData = this;
    vfs_.xOpen = &Calls::open;
    vfs_.xDelete = &Calls::remove;
    vfs_.xAccess = &Calls::access;
    vfs_.xFullPathname = &Calls::fullPath;
    vfs_.xRandomness = &Calls::randomness;
    vfs_.xSleep = &Calls::sleep;
    vfs_.xCurrentTime = &Calls::currentTime;
    vfs_.xGetLastError = &Calls::lastError;
    sqlite3_vfs_register(&vfs_, 0);
}

FolderVfs::~FolderVfs() {
    sqlite3_vfs_unregister(&vfs_);
}

const char* FolderVfs::pathOf(const char* name) const {
    if (name == nullptr)
        return nullptr;
    if (name == database_)
        return databasePath_.c_str();
    return name == journal_ ? journalPath_.c_str() : nullptr;
}

}  // namespace qrv
