#pragma once

#include <sys/Folder.h>

#include <sqlite3.h>

#include <string>

namespace qrv {

/// What SQLite can reach while it works on one database: the file of one name in an open folder,
/// and its rollback journal. It is asked for other files by what stands in a database and in a
/// journal, which may come from a stranger: for the journal of several databases, which would be
/// deleted, for a write-ahead log, for a database to attach, for temporary files. There are none
/// for it.
///
/// Must outlive the connections that were opened with its name.
class FolderVfs {
public:
    /// `name` is a name in the folder, no path.
    FolderVfs(const sys::Folder& folder, const std::string& name);
    FolderVfs(const FolderVfs&) = delete;
    FolderVfs& operator=(const FolderVfs&) = delete;
    ~FolderVfs();

    /// For `sqlite3_open_v2`.
    const char* name() const { return name_.c_str(); }

private:
    struct Calls;

    // The path by which the system finds the file of that name; null when it is none of ours.
    const char* pathOf(const char* name) const;

    // Keeps the handle open through which the paths lead.
    sys::Folder folder_;
    std::string database_;
    std::string journal_;
    std::string log_;
    std::string databasePath_;
    std::string journalPath_;
    std::string name_;
    sqlite3_vfs vfs_ = {};
};

}  // namespace qrv
