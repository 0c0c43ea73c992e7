#pragma once

#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <string>

namespace qrv {

/// Throws `DatabaseError` unless the file of that name is a regular one or missing, and what lies
/// beside it and would be taken for a part of it was left by a connection of ours: at most a
/// rollback journal of this database alone. `path` is the name of the database in messages.
void requireOwnFiles(const sys::Folder& folder, const std::string& name, const OdString& path);

/// Makes an empty file, which is an empty database, unless there is one. Throws `DatabaseError`.
void makeFile(const sys::Folder& folder, const std::string& name, const OdString& path);

}  // namespace qrv
