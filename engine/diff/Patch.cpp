#include <engine/diff/LineDiff.h>
#include <engine/diff/Lines.h>
#include <engine/diff/Patch.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

// The words of a patch are read by other programs, so they are the same in every language.
namespace qrv {

namespace {

constexpr std::size_t contextLines = 3;

using Changes = std::span<const LineChange>;

bool isPlain(char character) {
    return static_cast<unsigned char>(character) > ' ' && character != '\x7F' && character != '"' &&
           character != '\\';
}

std::string escaped(char character) {
    if (character == '"' || character == '\\')
        return {'\\', character};
    if (character == ' ' || isPlain(character))
        return {character};
    const auto byte = static_cast<unsigned char>(character);
    const auto digit = [byte](int shift) { return static_cast<char>('0' + ((byte >> shift) & 7)); };
    return {'\\', digit(6), digit(3), digit(0)};
}

std::string quoted(const std::string& name) {
    if (std::all_of(name.begin(), name.end(), isPlain))
        return name;
    std::string text = "\"";
    for (const char character : name)
        text += escaped(character);
    return text + '"';
}

/// The first folder of a name tells the side.
std::string oldName(const Difference& difference) {
    return quoted("a/" + difference.oldPath().toNarrow());
}
std::string newName(const Difference& difference) {
    return quoted("b/" + difference.path.toNarrow());
}

std::string oldNameIfThere(const Difference& difference) {
    return difference.before ? oldName(difference) : "/dev/null";
}
std::string newNameIfThere(const Difference& difference) {
    return difference.after ? newName(difference) : "/dev/null";
}

/// "12,7", or "12" for a single line. A side without lines names the one before.
std::string range(std::size_t first, std::size_t count) {
    const std::string begin = std::to_string(count == 0 ? first : first + 1);
    return count == 1 ? begin : begin + ',' + std::to_string(count);
}

std::size_t unchangedBetween(const LineChange& change, const LineChange& next) {
    return next.oldFirst - change.oldFirst - change.oldCount;
}

/// The first of the changes that are shown together, because no more than their surroundings lie
/// between them.
Changes neighbours(Changes changes) {
    std::size_t count = 1;
    while (count < changes.size() &&
           unchangedBetween(changes[count - 1], changes[count]) <= 2 * contextLines)
        ++count;
    return changes.first(count);
}

class HunkWriter {
public:
    HunkWriter(const Lines& before, const Lines& after, const PatchSink& sink)
        : before_(before), after_(after), sink_(sink) {}

    void write(Changes changes) {
        const LineChange& first = changes.front();
        const LineChange& last = changes.back();
        const std::size_t leading = std::min(contextLines, first.oldFirst);
        const std::size_t oldEnd =
            std::min(last.oldFirst + last.oldCount + contextLines, before_.size());
        const std::size_t trailing = oldEnd - last.oldFirst - last.oldCount;
        const std::size_t newEnd = last.newFirst + last.newCount + trailing;
        next_ = first.oldFirst - leading;
        const std::size_t newBegin = first.newFirst - leading;
        sink_(PatchLine::position, "@@ -" + range(next_, oldEnd - next_) + " +" +
                                       range(newBegin, newEnd - newBegin) + " @@");
        for (const LineChange& change : changes)
            write(change);
        writeContext(oldEnd);
    }

private:
    void write(const LineChange& change) {
        writeContext(change.oldFirst);
        for (std::size_t index = 0; index < change.oldCount; ++index)
            write(PatchLine::removed, '-', before_[change.oldFirst + index]);
        for (std::size_t index = 0; index < change.newCount; ++index)
            write(PatchLine::added, '+', after_[change.newFirst + index]);
        next_ += change.oldCount;
    }

    void writeContext(std::size_t end) {
        for (; next_ < end; ++next_)
            write(PatchLine::context, ' ', before_[next_]);
    }

    void write(PatchLine kind, char mark, std::string_view line) {
        const bool isEnded = line.ends_with('\n');
        std::string text(1, mark);
        text += line.substr(0, line.size() - (isEnded ? 1 : 0));
        sink_(kind, text);
        if (!isEnded)
            sink_(PatchLine::remark, "\\ No newline at end of file");
    }

    const Lines& before_;
    const Lines& after_;
    const PatchSink& sink_;
    // Of the old lines.
    std::size_t next_ = 0;
};

}  // namespace

void writePatchHeading(const Difference& difference, const PatchSink& sink) {
    // The first word is what programs know to apply renames and empty files by.
    sink(PatchLine::heading, "diff --git " + oldName(difference) + ' ' + newName(difference));
    if (!difference.before)
        sink(PatchLine::heading, "new file mode 100644");
    if (!difference.after)
        sink(PatchLine::heading, "deleted file mode 100644");
    if (!difference.isRenamed())
        return;
    sink(PatchLine::heading, "rename from " + quoted(difference.previousPath.toNarrow()));
    sink(PatchLine::heading, "rename to " + quoted(difference.path.toNarrow()));
}

void writePatchLines(const Difference& difference, std::string_view before, std::string_view after,
                     const PatchSink& sink) {
    const Lines oldLines(before);
    const Lines newLines(after);
    const std::vector<LineChange> changes = changesOfLines(oldLines, newLines);
    if (changes.empty())
        return;
    sink(PatchLine::heading, "--- " + oldNameIfThere(difference));
    sink(PatchLine::heading, "+++ " + newNameIfThere(difference));
    HunkWriter writer(oldLines, newLines, sink);
    for (Changes rest = changes; !rest.empty();) {
        const Changes hunk = neighbours(rest);
        writer.write(hunk);
        rest = rest.subspan(hunk.size());
    }
}

void writeBinaryRemark(const Difference& difference, const PatchSink& sink) {
    const auto size = [](const std::optional<TreeFile>& version) {
        return std::to_string(version ? version->sizeBytes : 0);
    };
    sink(PatchLine::remark, "Binary files " + oldNameIfThere(difference) + " and " +
                                newNameIfThere(difference) + " differ (" + size(difference.before) +
                                " and " + size(difference.after) + " bytes)");
}

}  // namespace qrv
