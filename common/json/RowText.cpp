#include <common/json/RowTextInternal.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace common {

namespace {

// So few that most parts are plain ASCII, which becomes bytes several times as fast as a part with
// one other character in it. Each part costs something too, so they should not be single rows.
constexpr std::size_t unitsAtOnce = 2048;

/// Whether the writer has nothing to escape. Without an early end, so that the compiler can look at
/// many units at once: hardly any text has one.
bool isPlainAscii(const std::wstring& units) {
    bool isPlain = true;
    for (const wchar_t unit : units)
        isPlain &= unit >= L' ' && unit <= L'~' && unit != L'"' && unit != L'\\';
    return isPlain;
}

}  // namespace

RowText::RowText(ut::TextFile& file, HandOver handOver, std::size_t limitUnits)
    : file_(file), handOver_(handOver), unitsLeft_(limitUnits) {
    units_.reserve(unitsAtOnce + unitsAtOnce / 8);
}

void RowText::name(std::wstring_view key) {
    beginLine();
    units_ += L'"';
    units_ += key;
    units_.append(L"\" : ", 4);
}

void RowText::string(const OdString& text) {
    const std::wstring& units = text.toWide();
    if (isPlainAscii(units)) {
        units_ += L'"';
        units_ += units;
        units_ += L'"';
    } else {
        // One place shall know what is escaped and how.
        units_ += jsonlib::json::write(units);
    }
}

void RowText::integer(std::int64_t number) {
    std::array<char, 20> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    units_.append(digits.data(), end);
}

void RowText::finish() {
    addLine();
}

void RowText::open(wchar_t bracket) {
    units_ += bracket;
    ++depth_;
    isFirst_ = true;
}

void RowText::close(wchar_t bracket) {
    --depth_;
    lineFeed();
    units_ += bracket;
    isFirst_ = false;
}

void RowText::beginLine() {
    if (!isFirst_)
        units_ += L',';
    isFirst_ = false;
    lineFeed();
}

// Our own file joins what it is given by line feeds, so the text can be handed over at any of
// them.
void RowText::lineFeed() {
    if (handOver_ == HandOver::inPieces && units_.size() >= unitsAtOnce)
        addLine();
    else
        units_ += L'\n';
    units_.append(4 * depth_, L' ');
}

void RowText::addLine() {
    if (units_.size() > unitsLeft_)
        throw std::length_error("a document of more text than can be read");
    // With the line feed that stood for the end of this part.
    unitsLeft_ -= std::min(unitsLeft_, units_.size() + 1);
    OdString line(std::move(units_));
    file_.addLine(line);
    units_ = std::move(line).toWide();
    units_.clear();
}

}  // namespace common
