#pragma once

#include <platform/kernel/OdString.h>
#include <platform/ut/TextFile.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace common {

/// A JSON document that goes into a text file while it is being written, in the form of
/// `jsonlib::json::write`. The caller gives the members of an object in the order of their names,
/// since that is the writer's order.
///
///     RowText text(file);
///     text.openObject();
///     text.name(L"path");
///     text.string(path);
///     text.closeObject();
///     text.finish();
///
/// A document that is too long to be read again throws `std::length_error`.
class RowText {
public:
    static constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();
    /// In pieces it is several lines of the file, which a file that joins its lines by line feeds
    /// does not show, and needs less memory.
    enum class HandOver { inPieces, asOneLine };

    /// Adds to `file`, which must outlive it, a document of at most `limitUnits` units.
    explicit RowText(ut::TextFile& file, HandOver handOver = HandOver::inPieces,
                     std::size_t limitUnits = longest);

    void openObject() { open(L'{'); }
    void closeObject() { close(L'}'); }
    void openArray() { open(L'['); }
    void closeArray() { close(L']'); }
    /// Begins a member of the innermost object; its value comes next.
    void name(std::wstring_view key);
    /// Begins an element of the innermost array; it comes next.
    void element() { beginLine(); }

    void string(const OdString& text);
    void integer(std::int64_t number);
    void boolean(bool isTrue) { units_ += isTrue ? L"true" : L"false"; }

    /// Adds the rest. Nothing may follow.
    void finish();

private:
    void open(wchar_t bracket);
    void close(wchar_t bracket);
    void beginLine();
    void lineFeed();
    void addLine();

    ut::TextFile& file_;
    HandOver handOver_;
    std::size_t unitsLeft_;
    std::wstring units_;
    std::size_t depth_ = 0;
    bool isFirst_ = true;
};

}  // namespace common
