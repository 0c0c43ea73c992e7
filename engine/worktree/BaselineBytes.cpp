#include <engine/base/Digest.h>
#include <engine/worktree/BaselineBytes.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace qrv {

namespace {

using common::FileChange;
using common::StagedFile;

constexpr std::string_view kind = "qrv baseline ";
constexpr std::string_view version = "1\n";
constexpr std::size_t numberLength = 8;

/// Puts numbers of 64 bits, the lowest byte first, and texts behind their length.
class Writer {
public:
    void number(std::uint64_t number) {
        for (std::size_t byte = 0; byte < numberLength; ++byte)
            bytes_.push_back(static_cast<char>(number >> (8 * byte)));
    }
    void number(std::int64_t number) { this->number(static_cast<std::uint64_t>(number)); }
    void text(std::string_view text) {
        number(std::uint64_t{text.size()});
        bytes_.append(text);
    }
    void text(const OdString& text) { this->text(text.toNarrow()); }

    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

/// Takes them again.
class Reader {
public:
    struct Damaged {};

    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    std::uint64_t number() {
        const std::string_view bytes = take(numberLength);
        std::uint64_t number = 0;
        for (std::size_t byte = 0; byte < numberLength; ++byte)
            number |= std::uint64_t{static_cast<unsigned char>(bytes[byte])} << (8 * byte);
        return number;
    }
    std::int64_t integer() { return static_cast<std::int64_t>(number()); }
    std::string_view bytes() { return take(number()); }
    OdString text() { return OdString::fromNarrow(bytes()); }
    /// How many elements follow, each of which takes at least `leastLength` bytes.
    std::size_t count(std::size_t leastLength) {
        const std::uint64_t count = number();
        if (count > rest_.size() / leastLength)
            throw Damaged();
        return static_cast<std::size_t>(count);
    }
    void expectEnd() const {
        if (!rest_.empty())
            throw Damaged();
    }

private:
    std::string_view take(std::uint64_t length) {
        if (length > rest_.size())
            throw Damaged();
        const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(length));
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
};

std::string bodyOf(const KeptBaseline& kept) {
    Writer writer;
    writer.number(kept.stateFile.number);
    writer.number(kept.stateFile.sizeBytes);
    writer.number(kept.stateFile.modifiedNs);
    writer.number(kept.stateFile.changedNs);
    writer.text(kept.headCommit);
    writer.text(kept.state.head.reference);
    writer.number(std::uint64_t{kept.state.stagedFiles.size()});
    for (const StagedFile& file : kept.state.stagedFiles) {
        writer.number(static_cast<std::int64_t>(file.change));
        writer.text(file.path);
    }
    writer.number(std::uint64_t{kept.state.renames.size()});
    for (const auto& [path, previous] : kept.state.renames) {
        writer.text(path);
        writer.text(previous);
    }
    writer.number(std::uint64_t{kept.baseline->files().size()});
    for (const KnownFile& file : kept.baseline->files()) {
        writer.number(file.sizeBytes);
        writer.number(file.unmodifiedTicks);
        writer.number(file.modifiedTicks);
        writer.text(file.path);
    }
    return writer.bytes();
}

FileChange changeFrom(Reader& reader) {
    const std::uint64_t number = reader.number();
    if (number > static_cast<std::uint64_t>(FileChange::unchanged))
        throw Reader::Damaged();
    return static_cast<FileChange>(number);
}

common::State stateFrom(Reader& reader) {
    common::State state;
    state.head.reference = reader.text();
    for (std::size_t left = reader.count(2 * numberLength); left > 0; --left) {
        const FileChange change = changeFrom(reader);
        state.stagedFiles.emplace_back(reader.text(), change);
    }
    for (std::size_t left = reader.count(2 * numberLength); left > 0; --left) {
        const OdString path = reader.text();
        if (!state.renames.empty() && path <= state.renames.rbegin()->first)
            throw Reader::Damaged();
        state.renames.emplace_hint(state.renames.end(), path, reader.text());
    }
    return state;
}

std::vector<KnownFile> filesFrom(Reader& reader) {
    std::vector<KnownFile> files(reader.count(4 * numberLength));
    for (KnownFile& file : files) {
        file.sizeBytes = reader.integer();
        file.unmodifiedTicks = reader.integer();
        file.modifiedTicks = reader.integer();
        file.path = reader.bytes();
    }
    return files;
}

KeptBaseline bodyFrom(std::size_t begin, std::vector<char> bytes) {
    Reader reader(std::string_view(bytes.data(), bytes.size()).substr(begin));
    KeptBaseline kept;
    kept.stateFile.number = reader.number();
    kept.stateFile.sizeBytes = reader.integer();
    kept.stateFile.modifiedNs = reader.integer();
    kept.stateFile.changedNs = reader.integer();
    kept.headCommit = reader.text();
    kept.state = stateFrom(reader);
    std::vector<KnownFile> files = filesFrom(reader);
    reader.expectEnd();
    kept.baseline = std::make_shared<const Baseline>(std::move(bytes), std::move(files));
    return kept;
}

}  // namespace

std::string toBytes(const KeptBaseline& kept) {
    const std::string body = bodyOf(kept);
    return std::string(kind) + std::string(version) + Digest::of(body) + body;
}

bool isOfLaterProgram(std::string_view bytes) {
    return bytes.starts_with(kind) && !bytes.substr(kind.size()).starts_with(version);
}

std::optional<KeptBaseline> fromBytes(std::vector<char> bytes) {
    constexpr std::size_t digestBegin = kind.size() + version.size();
    constexpr std::size_t bodyBegin = digestBegin + digestLength;
    const std::string_view text(bytes.data(), bytes.size());
    if (!text.starts_with(kind) || isOfLaterProgram(text) || text.size() < bodyBegin ||
        Digest::of(text.substr(bodyBegin)) != text.substr(digestBegin, digestLength))
        return std::nullopt;
    try {
        return bodyFrom(bodyBegin, std::move(bytes));
    } catch (const Reader::Damaged&) {
        return std::nullopt;
    }
}

}  // namespace qrv
