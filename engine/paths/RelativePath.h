#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <compare>
#include <string>
#include <string_view>
#include <utility>

namespace qrv {

/// A path below the root of a repository that is safe to read and to write there, whoever gave it.
/// Only `check` and `checkBytes` make one, so that who is given one need not ask again.
///
/// Refused on every system, since records travel between systems: what is absolute or has an empty
/// component, "." or ".."; a NUL, a backslash or a colon; a component over 255 bytes and a path
/// over 4,000; a component of nothing but dots and blanks, of which some systems leave nothing; a
/// component that could mean the metadata folder in any letter case or disguise (code points that
/// file systems ignore, trailing dots and blanks, short names such as "QRV~1"), save the exact
/// ".qrv/properties/<name>" that the scan itself lists. And a text that is not the one which its
/// bytes read as, for then two texts would name one file.
class RelativePath {
public:
    /// Fails with a message that names the path and the reason.
    static Expected<RelativePath> check(const OdString& path);
    /// The same for a path in bytes.
    static Expected<RelativePath> checkBytes(std::string_view path);

    const OdString& text() const& { return text_; }
    OdString text() && { return std::move(text_); }
    /// It is a text like any other, but not the other way round.
    operator const OdString&() const { return text_; }
    /// The bytes for the file system.
    std::string bytes() const { return text_.toNarrow(); }
    /// Whether it is a file of the properties folder.
    bool isProperties() const;

    /// The order of texts.
    friend bool operator==(const RelativePath&, const RelativePath&) = default;
    friend std::strong_ordering operator<=>(const RelativePath&, const RelativePath&) = default;
    // So that a map of paths can be asked for a text.
    friend bool operator==(const RelativePath& path, const OdString& text) {
        return path.text_ == text;
    }
    friend std::strong_ordering operator<=>(const RelativePath& path, const OdString& text) {
        return path.text_ <=> text;
    }

private:
    explicit RelativePath(OdString text);

    // Without the bytes: a tree has a great many paths.
    OdString text_;
};

/// Why the path cannot be used in a repository, in a few words that are not translated yet (see
/// `tr`), or null. Knows nothing of any disk.
const wchar_t* refusalOfPath(std::string_view path);

/// Whether Windows could hold a file of this name: no component is a reserved device name, ends in
/// a dot or a blank, or has one of <>"|?*:\ or a control character. One that is not portable is
/// worth a warning when it is committed.
bool isPortable(std::string_view path);

}  // namespace qrv
