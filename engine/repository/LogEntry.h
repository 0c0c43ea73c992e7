#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <string>

namespace qrv {

/// A name out of a repository as it stands in the activity log, on one line and between single
/// quotes as a shell writes them: whoever made the name must not write lines of the log, nor have
/// any of it carried out should the text come before a shell.
OdString quotedName(const OdString& name);

/// For the parser of the arguments: empty, or what is wrong with a person's note, UTF-8. It is one
/// line among others: one with a line break could pass for two, and for one that the library wrote.
std::string refusalOfNote(const std::string& note);

/// Adds a line to the activity log of a repository, whose root is open. Fails with a message that
/// names the log when it cannot be written, or is something else than a file in the repository.
Expected<void> addToLog(const OdString& event, const common::RootPath& root,
                        const sys::Folder& folder);

/// The same after something that is done: the caller is told of a failure.
void logEvent(const OdString& event, const common::RootPath& root, const sys::Folder& folder,
              Caller& caller);

}  // namespace qrv
