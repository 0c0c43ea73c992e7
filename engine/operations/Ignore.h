#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/worktree/IgnoreRule.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// The ignore rules in force in the repository that holds `folder`, in the order of their lines; a
/// missing file is made first. The caller is told of lines that are no rules, and of those that are
/// left out because they would take too much time or memory. Fails when the repository cannot be
/// opened.
QRV_ENGINE_EXPORT Expected<std::vector<IgnoreRule>> listIgnoreRules(const std::string& folder,
                                                                    Caller& caller);

/// What the rules say of one path.
struct IgnoreAnswer {
    /// Relative to the root.
    OdString path;
    /// Nothing for a path that is not ignored.
    std::optional<IgnoreReason> reason;
};

/// Why the scan leaves out `path`, as a person typed it, which need not exist. Fails for a path
/// outside the repository, and when that cannot be opened.
QRV_ENGINE_EXPORT Expected<IgnoreAnswer> checkIgnored(const std::string& folder,
                                                      const std::string& path, Caller& caller);

/// Adds a rule to the ignore file, as a whole or not at all, and gives it with its line. Fails for
/// what is no rule (an empty line, a comment, a line break inside, what does not compile, what
/// would be left out), for a rule that is there already, and when the repository cannot be changed.
/// The caller is told of a rule that matches nothing.
QRV_ENGINE_EXPORT Expected<IgnoreRule> addIgnoreRule(const std::string& folder,
                                                     const OdString& rule, Caller& caller);

}  // namespace qrv
