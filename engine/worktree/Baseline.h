#pragma once

#include <common/state/State.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
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
    // As long as the file has this number and these times, in nanoseconds, it is as in HEAD.
    std::uint64_t number = 0;
    std::int64_t modifiedNs = never;
    std::int64_t changedNs = 0;
    /// The same by the time of modification alone, in ticks of `ut::DateTime`, as an index says.
    std::int64_t unmodifiedTicks = never;

    bool isNoted() const { return modifiedNs != never; }
    void note(const sys::FileStamp& stamp) {
        number = stamp.number;
        modifiedNs = stamp.modifiedNs;
        changedNs = stamp.changedNs;
    }
};

/// The order of the bytes' text and another text: negative, zero or positive.
int compare(std::string_view bytes, const OdString& text);
/// The same for two texts in bytes.
int compareTexts(std::string_view one, std::string_view other);

/// Whether a file that is there like that need not be read, because it is as in HEAD.
bool isUnmodified(const KnownFile& file, const sys::FileStatus& status);

/// What the working tree is compared with: the files of HEAD. It is made of bytes, not of texts,
/// since there may be very many and few of them have ever changed.
class Baseline {
public:
    Baseline() = default;
    /// The paths lie in `memory`; the files are ordered by them.
    Baseline(std::vector<char> memory, std::vector<KnownFile> files);
    // Copied, the files would name what belongs to another one.
    Baseline(const Baseline&) = delete;
    Baseline& operator=(const Baseline&) = delete;
    Baseline(Baseline&&) = default;
    Baseline& operator=(Baseline&&) = default;
    ~Baseline() = default;

    /// Ordered by path, by code units.
    const std::vector<KnownFile>& files() const { return files_; }

    /// Takes what an index noted of files of which nothing else is known.
    ///
    /// The time of a file is believed when the index says that the file is not modified and when it
    /// is safely older than the state file, written at `stateModifiedNs` (nanoseconds since 1970),
    /// that holds the index: it may have changed within the same tick of the clock after it was
    /// looked at. Without a state file, nothing is believed. "Modified" is never believed: a commit
    /// that was interrupted before it wrote the state may have made it untrue.
    void believe(const std::map<OdString, common::IndexData>& index,
                 std::optional<std::int64_t> stateModifiedNs);

    /// Puts these files, each path once, in place of those of their paths; nothing for one that is
    /// not there any more.
    void change(std::map<std::string, std::optional<KnownFile>> files);

private:
    /// Elsewhere than the first, what was changed later.
    std::vector<std::vector<char>> memory_;
    std::vector<KnownFile> files_;
};

/// Makes a baseline of one file after the other.
class BaselineBuilder {
public:
    /// Quickest in the order of the paths.
    void add(std::string_view path, const KnownFile& file);
    Baseline build();

private:
    std::vector<char> memory_;
    std::vector<KnownFile> files_;
    std::vector<std::size_t> ends_;
};

}  // namespace qrv
