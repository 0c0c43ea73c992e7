#pragma once

#include <platform/kernel/OdString.h>

#include <cstddef>
#include <vector>

namespace qrv {

/// What a person types for many paths at once: "?" is any one character and "*" any number of them
/// within a name; "**" is any number of them across folders, and "**/" as the beginning of a name
/// any number of folders, also none. Everything else is itself.
class PathGlob {
public:
    /// Whether the word has a "*" or a "?".
    static bool isGlob(const OdString& word);

    /// `folder`, which is taken as it is, and below it the glob; an empty folder is the root.
    PathGlob(const OdString& folder, const OdString& glob);

    /// Whether the whole path matches, or a folder above it. Takes no more steps than both lengths
    /// multiplied, whatever the glob.
    bool matches(const OdString& path) const;

private:
    enum class Kind { itself, any, anyInName, anything, anyFolders };
    struct Part {
        Kind kind = Kind::itself;
        char32_t character = 0;
    };

    void addGlob(const std::vector<char32_t>& glob);
    std::size_t addStars(const std::vector<char32_t>& glob, std::size_t begin);

    std::vector<Part> parts_;
    /// A path with fewer characters is no match.
    std::size_t fewest_ = 0;
};

}  // namespace qrv
