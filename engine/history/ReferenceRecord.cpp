#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/ReferenceName.h>
#include <engine/history/ReferenceRecord.h>
#include <engine/history/RowsInternal.h>
#include <engine/paths/Layout.h>
#include <sys/Append.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

constexpr std::string_view heading = "qrv references 1\n";
constexpr std::uint32_t permissions = 0666;
/// Some hundred thousand moves. More is not worth the memory.
constexpr std::size_t maximumSizeBytes = 64 << 20;
/// Some twenty lines, each of them some two hundred bytes.
constexpr std::int64_t endSizeBytes = 4096;
constexpr std::size_t fieldCount = 7;
/// Of a digest; enough to tell damage.
constexpr std::size_t sumLength = 16;

std::string sumOf(const std::string& before, std::string_view line) {
    return Digest::of(before + std::string(line)).substr(0, sumLength);
}

/// What the line says, up to the tab before its sum.
std::string_view textOf(std::string_view line) {
    return line.substr(0, line.rfind('\t') + 1);
}

std::string_view notedSum(std::string_view line) {
    return line.substr(textOf(line).size());
}

std::string hashOrDash(const OdString& hash) {
    return hash.isEmpty() ? "-" : hash.toNarrow();
}

std::string lineOf(const RecordedMove& move) {
    return std::to_string(move.generation) + '\t' + std::to_string(move.timeSeconds) + '\t' +
           (move.type == common::RefType::Branch ? "branch" : "tag") + '\t' + move.name.toNarrow() +
           '\t' + hashOrDash(move.before) + '\t' + hashOrDash(move.after) + '\t' + move.command +
           '\t';
}

std::optional<std::int64_t> numberOf(std::string_view digits) {
    std::int64_t number = 0;
    const auto [behind, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool isWhole = error == std::errc() && behind == digits.data() + digits.size();
    return isWhole && number >= 0 ? std::optional(number) : std::nullopt;
}

/// Empty for a dash.
std::optional<OdString> hashIn(std::string_view field) {
    if (field == "-")
        return OdString();
    const OdString hash = OdString::fromNarrow(field);
    return isDigest(hash) ? std::optional(hash) : std::nullopt;
}

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return fields;
}

/// Of a line without its sum, which ends in a tab.
std::optional<RecordedMove> moveOf(std::string_view line) {
    const std::vector<std::string_view> fields = fieldsOf(line);
    if (fields.size() != fieldCount || (fields[2] != "branch" && fields[2] != "tag"))
        return std::nullopt;
    const std::optional<std::int64_t> generation = numberOf(fields[0]);
    const std::optional<std::int64_t> time = numberOf(fields[1]);
    const Expected<OdString> name = checkedReferenceName(OdString::fromNarrow(fields[3]));
    const std::optional<OdString> before = hashIn(fields[4]);
    const std::optional<OdString> after = hashIn(fields[5]);
    if (!generation || !time || !name || !before || !after)
        return std::nullopt;
    return RecordedMove{*generation,
                        *time,
                        fields[2] == "tag" ? common::RefType::Tag : common::RefType::Branch,
                        *name,
                        *before,
                        *after,
                        std::string(fields[6])};
}

/// Text of the file, and the sum that its next line continues.
struct Lines {
    std::string text;
    std::string sum;
};

Lines with(const std::vector<RecordedMove>& moves, Lines lines) {
    for (const RecordedMove& move : moves) {
        const std::string line = lineOf(move);
        lines.sum = sumOf(lines.sum, line);
        lines.text += line + lines.sum + '\n';
    }
    return lines;
}

/// Takes the first line off, without its end; nothing when it has none.
std::optional<std::string_view> nextLine(std::string_view& text) {
    const std::size_t length = text.find('\n');
    if (length == std::string_view::npos)
        return std::nullopt;
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(length + 1);
    return line;
}

Expected<std::optional<std::vector<char>>> bytesOf(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::referenceRecordPath);
    if (!file && sys::meansAbsent(file.error()))
        return std::optional<std::vector<char>>();
    sys::Outcome<std::vector<char>> bytes = file ? file->readWhole(maximumSizeBytes) : file.error();
    if (!bytes)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"),
                             OdString(layout::referenceRecordPath), bytes.error());
    return std::optional(std::move(*bytes));
}

/// The last bytes of the file.
struct End {
    std::vector<char> bytes;
    /// Whether they are all.
    bool isWhole = false;
};

sys::Outcome<End> endOf(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::referenceRecordPath);
    const sys::Outcome<sys::FileStamp> stamp = file ? file->stamp() : file.error();
    if (!stamp)
        return stamp.error();
    const std::int64_t begin = std::max<std::int64_t>(stamp->sizeBytes - endSizeBytes, 0);
    End end = {.bytes = std::vector<char>(static_cast<std::size_t>(stamp->sizeBytes - begin)),
               .isWhole = begin == 0};
    const sys::Outcome<std::size_t> count = file->readAt(begin, end.bytes);
    if (!count)
        return count.error();
    end.bytes.resize(*count);
    return end;
}

std::error_code replace(const std::string& bytes, const sys::Folder& root) {
    sys::Outcome<sys::NewFile> file = root.newFile(layout::referenceRecordPath, permissions);
    if (!file)
        return file.error();
    if (const std::error_code error = file->write(bytes))
        return error;
    if (const std::error_code error = file->flush())
        return error;
    if (const std::error_code error = file->publish(sys::NewFile::Existing::replace))
        return error;
    return root.flush(layout::metadataFolder);
}

std::error_code add(const std::string& lines, const sys::Folder& root) {
    const std::error_code error = sys::append(root, layout::referenceRecordPath, lines);
    if (error != std::errc::permission_denied)
        return error;
    // A colleague's file, in a folder that is everybody's.
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::referenceRecordPath);
    const sys::Outcome<std::vector<char>> bytes =
        file ? file->readWhole(maximumSizeBytes) : file.error();
    return bytes ? replace(std::string(bytes->begin(), bytes->end()) + lines, root) : bytes.error();
}

}  // namespace

Expected<ReferenceRecord> ReferenceRecord::read(const sys::Folder& root) {
    const Expected<std::optional<std::vector<char>>> bytes = bytesOf(root);
    if (!bytes)
        return bytes.error();
    ReferenceRecord record;
    if (!*bytes)
        return record;
    record.isThere_ = true;
    std::string_view rest((*bytes)->data(), (*bytes)->size());
    if (!rest.starts_with(heading)) {
        record.damagedLine_ = 1;
        return record;
    }
    rest.remove_prefix(heading.size());
    int number = 1;
    while (const std::optional<std::string_view> line = nextLine(rest))
        record.takeLine(*line, ++number);
    record.hasUnendedLine_ = !rest.empty();
    return record;
}

std::optional<ReferenceRecord> ReferenceRecord::readEnd(const sys::Folder& root,
                                                        std::int64_t generation,
                                                        const ReferenceMap& references) {
    const sys::Outcome<End> end = endOf(root);
    if (!end || end->bytes.empty() || end->bytes.back() != '\n')
        return std::nullopt;
    ReferenceRecord record;
    record.isThere_ = true;
    record.references_ = references;
    std::string_view rest(end->bytes.data(), end->bytes.size());
    const std::optional<std::string_view> first = nextLine(rest);
    // Where there is more the first line is cut, and of the next only the sum can be believed.
    if (end->isWhole && *first != heading.substr(0, heading.size() - 1))
        return std::nullopt;
    if (!end->isWhole)
        record.sum_ = notedSum(nextLine(rest).value_or(std::string_view()));
    while (const std::optional<std::string_view> line = nextLine(rest))
        record.takeLine(*line, 1);
    // What was done last, once more, changes nothing.
    const bool leadsThere = record.generation() == generation && record.references_ == references;
    if (record.damagedLine_ > 0 || record.moves_.empty() || !leadsThere)
        return std::nullopt;
    return record;
}

std::int64_t ReferenceRecord::generation() const {
    return moves_.empty() ? 0 : moves_.back().generation;
}

/// The lines behind a damaged one continue the sum that is noted in it.
void ReferenceRecord::takeLine(std::string_view line, int number) {
    const std::string_view text = textOf(line);
    std::optional<RecordedMove> move = moveOf(text);
    if (move && notedSum(line) == sumOf(sum_, text))
        take(std::move(*move));
    else if (damagedLine_ == 0)
        damagedLine_ = number;
    sum_ = notedSum(line);
}

void ReferenceRecord::take(RecordedMove move) {
    if (move.after.isEmpty())
        references_.erase({move.type, move.name});
    else
        references_[{move.type, move.name}] = move.after;
    moves_.push_back(std::move(move));
}

Expected<void> ReferenceRecord::append(const std::vector<RecordedMove>& moves,
                                       const sys::Folder& root) {
    const bool isSound = isThere_ && damagedLine_ == 0 && !hasUnendedLine_;
    Lines lines = with(moves, isSound ? Lines{.text = {}, .sum = sum_}
                                      : with(moves_, {.text = std::string(heading), .sum = {}}));
    const std::error_code error = isSound ? add(lines.text, root) : replace(lines.text, root);
    if (error)
        return systemFailure(tr(L"'%ls' cannot be written: %ls"),
                             OdString(layout::referenceRecordPath), error);
    sum_ = std::move(lines.sum);
    isThere_ = true;
    damagedLine_ = 0;
    hasUnendedLine_ = false;
    for (const RecordedMove& move : moves)
        take(move);
    return {};
}

}  // namespace qrv
