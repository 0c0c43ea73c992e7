#pragma once

#include <common/state/State.h>
#include <engine/tree/Tree.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace qrv {

/// A file of HEAD as the comparison with the working tree needs it.
struct KnownFile {
    /// Of a file that must be read.
    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::min();

    /// Bytes below the root. They belong to the baseline.
    std::string_view path;
    std::int64_t sizeBytes = 0;
    /// As long as the file has this time of modification, in ticks of `ut::DateTime`, it is as in
    /// HEAD.
    std::int64_t unmodifiedTicks = never;
    /// With this time it was read and found modified. It is read again, but there is nothing new to
    /// note.
    std::int64_t modifiedTicks = never;
};

/// The order of the bytes' text and another text: negative, zero or positive.
int compare(std::string_view bytes, const OdString& text);

/// Whether a file that is there like that need not be read, because it is as in HEAD.
bool isUnmodified(const KnownFile& file, const sys::FileStatus& status);

/// What the working tree is compared with: the files of HEAD. It is made of bytes, not of texts,
/// since there may be very many and few of them have ever changed.
class Baseline {
public:
    /// Of the files of HEAD, ordered by path, and what the index noted of them.
    ///
    /// The time of a file is believed when the index says that the file is not modified and when it
    /// is safely older than the state file, written at `stateModifiedNs` (nanoseconds since 1970),
    /// that holds the index: it may have changed within the same tick of the clock after it was
    /// looked at. Without a state file, nothing is believed. "Modified" is never believed: a commit
    /// that was interrupted before it wrote the state may have made it untrue.
    static Baseline of(const std::vector<SizedFile>& head,
                       const std::map<OdString, common::IndexData>& index,
                       std::optional<std::int64_t> stateModifiedNs);
    /// The paths lie in `memory`.
    Baseline(std::vector<char> memory, std::vector<KnownFile> files);
    // Copied, the files would name what belongs to another one.
    Baseline(const Baseline&) = delete;
    Baseline& operator=(const Baseline&) = delete;
    Baseline(Baseline&&) = default;
    Baseline& operator=(Baseline&&) = default;
    ~Baseline() = default;

    /// Ordered by path, by code units.
    const std::vector<KnownFile>& files() const { return files_; }

private:
    std::vector<char> memory_;
    std::vector<KnownFile> files_;
};

}  // namespace qrv
