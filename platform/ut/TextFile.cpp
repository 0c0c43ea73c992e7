#include <platform/ut/AtomicWriteInternal.h>
#include <platform/ut/FileName.h>
#include <platform/ut/FileTextInternal.h>
#include <platform/ut/TextFile.h>

#include <utility>

namespace ut {

namespace {

constexpr int anyKind = 0x1FFF;

}  // namespace

TextFile::TextFile(const OdString& path) : path_(path) {
}

bool TextFile::exists() const {
    return FileName(path_).exists(anyKind);
}

bool TextFile::open() {
    FileText file = readFileText(path_);
    text_ = std::move(file.text);
    position_ = 0;
    isPastEnd_ = false;
    return file.errorNumber == 0;
}

OdString TextFile::getFirstLine() {
    position_ = 0;
    isPastEnd_ = false;
    return getNextLine();
}

OdString TextFile::getNextLine() {
    isPastEnd_ = position_ >= text_.getLength();
    if (isPastEnd_)
        return {};
    const int lineFeed = text_.find(L'\n', position_);
    const int begin = position_;
    int end = lineFeed < 0 ? text_.getLength() : lineFeed;
    position_ = lineFeed < 0 ? end : end + 1;
    if (lineFeed > begin && text_[lineFeed - 1] == L'\r')
        --end;
    return text_.mid(begin, end - begin);
}

void TextFile::addLine(const OdString& line) {
    // Kept as the bytes to be written: a whole document is often added as one line, and its units
    // take four times the room.
    if (hasAdded_)
        addedUtf8_ += '\n' + line.toNarrow();
    else
        addedUtf8_ = line.toNarrow();
    hasAdded_ = true;
}

bool TextFile::write() {
    return replaceFile(path_, addedUtf8_);
}

}  // namespace ut
