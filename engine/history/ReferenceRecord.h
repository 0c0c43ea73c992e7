#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrv {

/// That a branch or tag went from one commit to another.
struct RecordedMove {
    /// How often references had changed then (see the history's `generation`).
    std::int64_t generation = 0;
    /// Seconds since 1970-01-01T00:00:00Z.
    std::int64_t timeSeconds = 0;
    common::RefType type = common::RefType::Branch;
    OdString name;
    /// Hashes; empty before the reference was made, and after it was removed.
    OdString before;
    OdString after;
    /// The word by which the program was told what to do: "commit".
    std::string command;

    friend bool operator==(const RecordedMove&, const RecordedMove&) = default;
};

using ReferenceKey = std::pair<common::RefType, OdString>;
/// The hashes that references name.
using ReferenceMap = std::map<ReferenceKey, OdString>;

/// A second record of where branches and tags pointed, outside the history: lines that are only
/// ever added, each with a sum over itself and all before it. From it lost references are made
/// anew, and a history that is older than the record is known. A last line without an end, which
/// somebody who was killed has left, does not count. docs/formats/reference-record.md describes the
/// file.
class ReferenceRecord {
public:
    /// The whole record; an empty one when there is no file. Fails when it cannot be read.
    static Expected<ReferenceRecord> read(const sys::Folder& root);
    /// The record of a history whose references point there, and changed so often, by a look at no
    /// more than the end of the file: `moves` are the last ones only. Nothing when the end is
    /// damaged or does not lead there; `read` tells more then.
    static std::optional<ReferenceRecord> readEnd(const sys::Folder& root, std::int64_t generation,
                                                  const ReferenceMap& references);

    bool isThere() const { return isThere_; }
    /// Those of all lines that are whole.
    const std::vector<RecordedMove>& moves() const { return moves_; }
    /// The number of the first line that is damaged, from 1; 0 when all are whole.
    int damagedLine() const { return damagedLine_; }
    /// Of the last line; 0 without one.
    std::int64_t generation() const;
    /// Where everything pointed after the last line.
    const ReferenceMap& references() const { return references_; }

    /// Adds lines behind the last one. What is damaged or without an end is given up with that: the
    /// file is written anew as a whole then. The lines are on the disk when this returns. When it
    /// fails, all that was there still is, and the record has to be read again.
    Expected<void> append(const std::vector<RecordedMove>& moves, const sys::Folder& root);

private:
    void takeLine(std::string_view line, int number);
    void take(RecordedMove move);

    bool isThere_ = false;
    int damagedLine_ = 0;
    bool hasUnendedLine_ = false;
    /// What the next line continues.
    std::string sum_;
    std::vector<RecordedMove> moves_;
    ReferenceMap references_;
};

}  // namespace qrv
