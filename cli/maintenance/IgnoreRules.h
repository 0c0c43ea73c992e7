#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <optional>
#include <regex>
#include <vector>

namespace qrv_cli {

/// A rule in force.
struct IgnoreRule {
    /// Counted from 1.
    int line = 0;
    OdString text;
    std::regex expression;
};

/// The rules of the repository in the order of their lines, as the scan has them. `onError` is told
/// of the lines that are no rules, as `common::RepoIgnore` tells them.
std::vector<IgnoreRule> ignoreRules(const common::RootPath& root,
                                    const std::function<void(const OdString&)>& onError);

/// Why a path is left out.
struct IgnoreReason {
    /// What a rule matches: the path itself, or a folder above it.
    OdString path;
    /// The first rule that does; 0 and empty for the metadata folder, which needs none.
    int line = 0;
    OdString rule;
};

/// Why the scan leaves out `path`, which is relative to the root and need not exist; nothing when
/// it does not. Like the scan, it looks at the folders first, and only at their names.
std::optional<IgnoreReason> reasonToIgnore(const OdString& path,
                                           const std::vector<IgnoreRule>& rules);

/// Adds a line to the ignore file, as a whole or not at all, and gives its number. Refuses, with a
/// message, what is no rule: an empty line, a comment, a line break inside, and what the library
/// does not compile; and a rule that is there already.
Expected<int> addIgnoreRule(const OdString& rule, const common::RootPath& root);

/// Rules for what a drafting office's programs leave beside drawings and nobody wants to keep:
/// autosaves, backups, logs of plots, lock files, temporary files.
std::vector<OdString> draftingIgnoreRules();

/// Adds those that are not there yet, under a heading, and gives their number. Fails, with nothing
/// changed, when the ignore file cannot be read or written.
Expected<int> addDraftingIgnoreRules(const common::RootPath& root);

}  // namespace qrv_cli
