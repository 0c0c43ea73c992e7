#include <engine/base/Digest.h>
#include <engine/base/Translation.h>
#include <engine/history/ReferenceName.h>
#include <engine/history/ReferenceRecord.h>
#include <engine/history/RowsInternal.h>
#include <engine/worktree/Workspace.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace qrv_cli {

namespace {

constexpr std::string_view heading = "qrv references 1\n";
constexpr std::uint32_t permissions = 0666;
/// Some hundred thousand moves. More is not worth the memory.
constexpr std::size_t maximumSizeBytes = 64 << 20;
constexpr std::size_t fieldCount = 7;
/// Of a digest; enough to tell damage.
constexpr std::size_t sumLength = 16;

std::string sumOf(const std::string& before, std::string_view line) {
    return Digest::of(before + std::string(line)).substr(0, sumLength);
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
    return isHash(hash) ? std::optional(hash) : std::nullopt;
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

ErrorMessage unreadable(std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), OdString(referenceRecordPath), cause);
}

Expected<std::optional<std::vector<char>>> bytesOf(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(referenceRecordPath);
    if (!file && sys::meansAbsent(file.error()))
        return std::optional<std::vector<char>>();
    sys::Outcome<std::vector<char>> bytes = file ? file->readWhole(maximumSizeBytes) : file.error();
    if (!bytes)
        return unreadable(bytes.error());
    return std::optional(std::move(*bytes));
}

std::error_code write(const std::string& bytes, const sys::Folder& root) {
    sys::Outcome<sys::NewFile> file = root.newFile(referenceRecordPath, permissions);
    if (!file)
        return file.error();
    if (const std::error_code error = file->write(bytes))
        return error;
    if (const std::error_code error = file->flush())
        return error;
    if (const std::error_code error = file->publish(sys::NewFile::Existing::replace))
        return error;
    return root.flush(".qrv");
}

}  // namespace

Expected<ReferenceRecord> ReferenceRecord::read(const sys::Folder& root) {
    const Expected<std::optional<std::vector<char>>> bytes = bytesOf(root);
    if (!bytes)
        return bytes.error();
    ReferenceRecord record;
    record.text_ = heading;
    if (!*bytes)
        return record;
    record.isThere_ = true;
    std::string_view rest((*bytes)->data(), (*bytes)->size());
    if (!rest.starts_with(heading)) {
        record.damagedLine_ = 1;
        return record;
    }
    rest.remove_prefix(heading.size());
    for (int number = 2; !rest.empty(); ++number) {
        const std::size_t length = rest.find('\n');
        const std::string_view line = rest.substr(0, length);
        const std::string_view text = line.substr(0, line.rfind('\t') + 1);
        const std::optional<RecordedMove> move = moveOf(text);
        const std::string sum = sumOf(record.sum_, text);
        if (length == std::string_view::npos || !move || line.substr(text.size()) != sum) {
            record.damagedLine_ = number;
            return record;
        }
        record.take(*move);
        record.text_ += rest.substr(0, length + 1);
        record.sum_ = sum;
        rest.remove_prefix(length + 1);
    }
    return record;
}

std::int64_t ReferenceRecord::generation() const {
    return moves_.empty() ? 0 : moves_.back().generation;
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
    std::string text = text_;
    std::string sum = sum_;
    for (const RecordedMove& move : moves) {
        const std::string line = lineOf(move);
        sum = sumOf(sum, line);
        text += line + sum + '\n';
    }
    if (const std::error_code error = write(text, root))
        return systemFailure(tr(L"'%ls' cannot be written: %ls"), OdString(referenceRecordPath),
                             error);
    text_ = std::move(text);
    sum_ = std::move(sum);
    isThere_ = true;
    damagedLine_ = 0;
    for (const RecordedMove& move : moves)
        take(move);
    return {};
}

}  // namespace qrv_cli
