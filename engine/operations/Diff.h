#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/diff/Difference.h>
#include <engine/diff/PatchLine.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// What is to be compared.
struct DiffRequest {
    /// The older commit, as a person calls it: "HEAD", a branch or tag, a number or the beginning
    /// of a hash. Without it, the current branch's.
    std::optional<OdString> before;
    /// The newer commit; without it, the working files.
    std::optional<OdString> after;
    /// Only these files and folders, each as a person wrote it: absolute, or below the current
    /// folder. All, when there are none.
    std::vector<std::string> paths;
};

/// What differs, ordered by path. Fails for a commit that is not found, for a path that is on
/// neither side, when a working file cannot be read, and when the repository cannot be opened or
/// read.
QRV_ENGINE_EXPORT Expected<std::vector<Difference>> diff(const std::string& folder,
                                                         const DiffRequest& request,
                                                         Caller& caller);

/// Takes a file that differs, before the lines of its patch.
using DifferenceSink = std::function<void(const Difference& difference)>;

/// Gives each file that differs to `onFile`, and then the lines of its patch to `onLine`. Fails as
/// `diff` does, and when contents that are to be compared cannot be read; what was given out by
/// then is right.
QRV_ENGINE_EXPORT Expected<void> diffLines(const std::string& folder, const DiffRequest& request,
                                           const DifferenceSink& onFile, const PatchSink& onLine,
                                           Caller& caller);

}  // namespace qrv
