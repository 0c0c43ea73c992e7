#pragma once

#include <common/base/Expected.h>
#include <engine/base/Bytes.h>
#include <engine/database/Database.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/FrameTable.h>

#include <memory>

namespace qrv {

/// Opens a frame in a table of frames for reading. While it is read, other processes cannot write
/// to the database. `base` holds the contents of the frame's base, null where it has none. Fails
/// when the frame cannot be whole; memory for its contents is taken only after that. Throws
/// `DatabaseError`.
Expected<std::unique_ptr<FrameReader>> openFrame(std::shared_ptr<Database> database,
                                                 const Frame& frame,
                                                 std::shared_ptr<const Bytes> base,
                                                 FrameReader::Check check);

}  // namespace qrv
