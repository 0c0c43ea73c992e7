#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <common/worktree/IgnoreLine.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <regex>
#include <vector>

namespace common {

/// The ignore rules of a repository, read once from the text file "ignore" of its properties
/// folder.
///
/// A line that is empty or begins with "#" says nothing. One that begins with "^" is an ECMAScript
/// expression, in which letter case counts; any other line is a glob ("*" any characters, "?" one,
/// and brackets as in expressions), in which it does not. Nothing is trimmed. A rule is matched
/// against the whole of a name's narrow form, byte by byte.
class QRV_COMMON_EXPORT RepoIgnore {
public:
    /// Reads the rules of `root`. A missing file is made first, with the explanation and the
    /// default rules; a failure of that is silent and leaves no rules.
    ///
    /// Lines that are no valid expression are left out. When there are any, `onError` is told a
    /// heading and then one message a line, in order; without an `onError`, std::bad_function_call
    /// is thrown.
    RepoIgnore(std::function<void(const OdString&)> onError, const RootPath& root);

    /// A copy of the valid rules, in the order of their lines.
    std::vector<std::regex> expressions() const { return expressions_; }

    /// How to write rules, in the user's language: each line ends with a line feed and, unless
    /// `plain`, begins with "#".
    static OdString explanation(bool plain);
    /// The rules of a new ignore file, each followed by a line feed.
    static OdString defaultIgnore();
    /// Makes the ignore file with the given content, and the properties folder where it is missing.
    /// An existing file stays as it is, which is a success. Fails when the file cannot be written.
    static Expected<void> write(const OdString& content, const RootPath& root);

private:
    friend class NameRules;
    friend Expected<void> visitRepoFiles(std::function<void(const OdString&)> onError,
                                         const RootPath& root,
                                         const std::function<void(OdString)>& onFile,
                                         const std::function<void(OdString)>& onUnread);

    void load(const RootPath& root, std::function<void(const OdString&)> onError);
    std::vector<OdString> parse();
    Expected<void> addRule(const OdString& line);

    OdString file_;
    std::vector<std::regex> expressions_;
    // The line of each expression: the scan matches the simple ones without the expression.
    std::vector<IgnoreLine> lines_;
    // Whether the file was read to its end, and not only taken for one without rules.
    bool isRead_ = false;
};

}  // namespace common
