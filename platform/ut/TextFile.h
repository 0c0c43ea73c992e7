#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace ut {

/// A text file, read line by line or written as a whole. Reads UTF-8 with or without a byte-order
/// mark and UTF-16 with one; writes UTF-8 without. LF and CRLF end a line; a line end at the end of
/// the file begins no further line. The lines read and the lines added have nothing to do with each
/// other.
class QRV_PLATFORM_EXPORT TextFile {
public:
    /// Only keeps the path; does not touch the disk.
    explicit TextFile(const OdString& path);

    /// As `FileName::exists`: false only when certainly nothing is there.
    bool exists() const;

    /// Reads the whole file. False when it cannot be read; there are no lines then.
    bool open();
    /// The first line, or the empty text when there is none.
    OdString getFirstLine();
    /// The line after the one last given, or the empty text behind the last one.
    OdString getNextLine();
    /// True once a line behind the last one was asked for.
    bool eof() const { return isPastEnd_; }

    /// Adds a line to what `write` will write. Line feeds inside it are kept.
    void addLine(const OdString& line);
    /// Replaces the file by the added lines, joined by line feeds, with none after the last.
    ///
    /// Atomic and durable: the text goes to a new file in the same folder, is flushed to the disk
    /// and renamed over the old file, whose permissions it takes over, and whose owner and group
    /// where the system allows that; then the folder is flushed. A symbolic link at the path is
    /// replaced, not followed; a folder, pipe or device, and a file that this process may not
    /// write, is refused. False on any failure: the old file is then untouched and no temporary
    /// file stays; only when the last step failed, the flush of the folder, is the new file already
    /// in its place. A process killed on the way leaves the old file or the new one, and perhaps a
    /// temporary file, whose name ends in ".qrv-tmp", beside it.
    bool write();

private:
    OdString path_;
    OdString text_;
    int position_ = 0;
    bool isPastEnd_ = false;
    std::string addedUtf8_;
    bool hasAdded_ = false;
};

}  // namespace ut
