#pragma once

#include <engine/history/HeadFile.h>
#include <engine/worktree/Baseline.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

/// A baseline as it is kept in ".qrv/baseline", so that the files of HEAD need not be read one by
/// one from the history: what has changed since is few. It is made of the history only, so that it
/// may be lost. docs/formats/baseline-file.md describes it, and when it is believed.
struct KeptBaseline {
    /// The last change of the files of HEAD that is in it.
    HeadChange last;
    std::shared_ptr<Baseline> baseline;
};

/// What stands at the beginning of the file.
struct BaselineHeading {
    HeadChange last;
    std::uint64_t fileCount = 0;
};

/// The bytes that `headingFrom` needs.
extern const std::size_t baselineHeadingLength;

/// How long all paths together may be in so many bytes. Few bytes can stand for very long paths,
/// and who reads them must not run out of memory.
std::uint64_t mostPathBytes(std::size_t length);

/// The bytes of the file.
std::string toBytes(const HeadChange& last, const Baseline& baseline);

/// Whether another program than this one wrote them, in a form that this one does not know.
bool isOfOtherProgram(std::string_view bytes);

/// Nothing for bytes with which no file begins that `toBytes` made.
std::optional<BaselineHeading> headingFrom(std::string_view bytes);

/// Nothing for bytes that `toBytes` did not make.
std::optional<KeptBaseline> fromBytes(std::string_view bytes);

}  // namespace qrv
