#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// What is known of a commit beside its files.
struct CommitEntry {
    /// Counts from 1 in the order in which commits were made here.
    std::int64_t number = 0;
    /// Of the commit and, through its parents', of all before it.
    OdString hash;
    /// Hashes; the first is the one that the deltas are against.
    std::vector<OdString> parents;
    /// Who made it, as a person reads it.
    OdString author;
    /// In any number of lines; the first one is the title.
    OdString message;
    /// Seconds since 1970-01-01T00:00:00Z.
    std::int64_t timeSeconds = 0;

    /// Equal in everything.
    friend bool operator==(const CommitEntry&, const CommitEntry&) = default;
};

}  // namespace qrv
