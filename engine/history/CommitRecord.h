#pragma once

#include <common/base/Expected.h>
#include <engine/history/Commit.h>

#include <functional>
#include <string>
#include <string_view>

namespace qrv {

using RecordSink = std::function<void(std::string_view bytes)>;

/// Gives, piece by piece, the bytes whose digest is the hash of the commit: its record in the form
/// in which it is sent to a server, without the hash itself.
void writeRecord(const NewCommit& commit, const RecordSink& sink);

/// The same as a whole.
std::string recordOf(const NewCommit& commit);

/// The commit of such a record, with sizes of 0, which are no part of it. Fails for bytes that
/// `recordOf` does not write, and for paths that are not safe.
Expected<NewCommit> commitOfRecord(std::string_view bytes);

}  // namespace qrv
