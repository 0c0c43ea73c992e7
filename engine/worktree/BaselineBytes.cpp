#include <engine/base/Digest.h>
#include <engine/worktree/BaselineBytes.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

constexpr std::string_view kind = "qrv baseline ";
constexpr std::string_view version = "2\n";
constexpr std::size_t numberLength = 8;
constexpr std::size_t digestBegin = kind.size() + version.size();
constexpr std::size_t bodyBegin = digestBegin + digestLength;
constexpr unsigned bitsOfByte = 8;
constexpr unsigned bitsOfGroup = 7;
constexpr unsigned char moreFollows = 1U << bitsOfGroup;

/// Small numbers, of either sign, become small ones.
std::uint64_t folded(std::int64_t number) {
    const std::uint64_t twice = static_cast<std::uint64_t>(number) << 1U;
    return number < 0 ? ~twice : twice;
}

std::int64_t unfolded(std::uint64_t number) {
    const std::uint64_t half = number >> 1U;
    return static_cast<std::int64_t>((number & 1U) != 0 ? ~half : half);
}

/// The difference of any two, from which the other comes back.
std::int64_t difference(std::int64_t one, std::int64_t other) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(one) -
                                     static_cast<std::uint64_t>(other));
}

std::int64_t sum(std::int64_t one, std::int64_t other) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(one) +
                                     static_cast<std::uint64_t>(other));
}

std::size_t sharedLength(std::string_view one, std::string_view other) {
    return static_cast<std::size_t>(
        std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first - one.begin());
}

/// What the next file's row is written against.
struct Previous {
    std::string_view path;
    std::int64_t number = 0;
    std::int64_t modifiedNs = 0;
};

class Writer {
public:
    void number(std::uint64_t number) {
        for (std::size_t byte = 0; byte < numberLength; ++byte)
            bytes_.push_back(static_cast<char>(number >> (bitsOfByte * byte)));
    }
    void number(std::int64_t number) { this->number(static_cast<std::uint64_t>(number)); }
    /// Seven bits a byte, the lowest first.
    void shortNumber(std::uint64_t number) {
        for (; number >= moreFollows; number >>= bitsOfGroup)
            bytes_.push_back(static_cast<char>(number | moreFollows));
        bytes_.push_back(static_cast<char>(number));
    }
    void file(const KnownFile& file) {
        const std::size_t shared = sharedLength(previous_.path, file.path);
        shortNumber(shared);
        shortNumber(file.path.size() - shared);
        bytes_.append(file.path.substr(shared));
        // Which files are noted stands in the lowest bit.
        const auto size = static_cast<std::uint64_t>(file.sizeBytes);
        shortNumber(size << 1U | static_cast<std::uint64_t>(file.isNoted()));
        previous_.path = file.path;
        if (!file.isNoted())
            return;
        const auto number = static_cast<std::int64_t>(file.number);
        shortNumber(folded(difference(number, previous_.number)));
        shortNumber(folded(difference(file.modifiedNs, previous_.modifiedNs)));
        shortNumber(folded(difference(file.changedNs, file.modifiedNs)));
        previous_.number = number;
        previous_.modifiedNs = file.modifiedNs;
    }

    std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
    Previous previous_;
};

/// Takes them again, and nothing that the writer would have written in another way.
class Reader {
public:
    struct Damaged {};

    explicit Reader(std::string_view bytes)
        : rest_(bytes), mostPathBytes_(mostPathBytes(bytes.size())) {}

    std::uint64_t number() {
        const std::string_view bytes = take(numberLength);
        std::uint64_t number = 0;
        for (std::size_t byte = 0; byte < numberLength; ++byte)
            number |= std::uint64_t{static_cast<unsigned char>(bytes[byte])} << (bitsOfByte * byte);
        return number;
    }
    std::int64_t integer() { return static_cast<std::int64_t>(number()); }

    void files(std::uint64_t count, BaselineBuilder& builder) {
        for (; count > 0; --count) {
            KnownFile file;
            path();
            const std::uint64_t size = shortNumber();
            file.sizeBytes = static_cast<std::int64_t>(size >> 1U);
            if ((size & 1U) != 0)
                stamp(file);
            builder.add(path_, file);
            pathBytes_ += path_.size();
            if (pathBytes_ > mostPathBytes_)
                throw Damaged();
        }
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

    std::uint64_t shortNumber() {
        constexpr unsigned lastShift = 63;
        std::uint64_t number = 0;
        for (unsigned shift = 0; shift <= lastShift; shift += bitsOfGroup) {
            const auto byte = static_cast<unsigned char>(take(1).front());
            const bool isTooMuch = shift == lastShift && byte > 1;
            if (isTooMuch || (byte == 0 && shift > 0))
                throw Damaged();
            number |= std::uint64_t{byte} % moreFollows << shift;
            if (byte < moreFollows)
                return number;
        }
        throw Damaged();
    }

    void path() {
        const std::uint64_t shared = shortNumber();
        const std::string_view rest = take(shortNumber());
        if (shared > path_.size())
            throw Damaged();
        before_ = path_;
        path_.resize(static_cast<std::size_t>(shared));
        path_.append(rest);
        // A longer part could have been shared, or the order is another.
        if (sharedLength(before_, path_) != shared || compareTexts(before_, path_) >= 0)
            throw Damaged();
    }

    void stamp(KnownFile& file) {
        previous_.number = sum(previous_.number, unfolded(shortNumber()));
        previous_.modifiedNs = sum(previous_.modifiedNs, unfolded(shortNumber()));
        file.number = static_cast<std::uint64_t>(previous_.number);
        file.modifiedNs = previous_.modifiedNs;
        file.changedNs = sum(file.modifiedNs, unfolded(shortNumber()));
        if (!file.isNoted())
            throw Damaged();
    }

    std::string_view rest_;
    std::string path_;
    std::string before_;
    const std::uint64_t mostPathBytes_;
    std::uint64_t pathBytes_ = 0;
    Previous previous_;
};

BaselineHeading headingOf(Reader& reader) {
    BaselineHeading heading;
    heading.last.sequence = reader.integer();
    heading.last.mark = reader.integer();
    heading.fileCount = reader.number();
    return heading;
}

}  // namespace

const std::size_t baselineHeadingLength = bodyBegin + 3 * numberLength;

std::uint64_t mostPathBytes(std::size_t length) {
    constexpr std::uint64_t always = 1 << 20;
    constexpr std::uint64_t forEachByte = 64;
    return always + forEachByte * length;
}

std::string toBytes(const HeadChange& last, const Baseline& baseline) {
    Writer writer;
    writer.number(last.sequence);
    writer.number(last.mark);
    writer.number(std::uint64_t{baseline.files().size()});
    for (const KnownFile& file : baseline.files())
        writer.file(file);
    const std::string body = writer.take();
    return std::string(kind) + std::string(version) + Digest::of(body) + body;
}

bool isOfOtherProgram(std::string_view bytes) {
    return bytes.starts_with(kind) && !bytes.substr(kind.size()).starts_with(version);
}

std::optional<BaselineHeading> headingFrom(std::string_view bytes) {
    if (!bytes.starts_with(kind) || isOfOtherProgram(bytes) || bytes.size() < baselineHeadingLength)
        return std::nullopt;
    Reader reader(bytes.substr(bodyBegin));
    return headingOf(reader);
}

std::optional<KeptBaseline> fromBytes(std::string_view bytes) {
    if (!headingFrom(bytes) ||
        Digest::of(bytes.substr(bodyBegin)) != bytes.substr(digestBegin, digestLength))
        return std::nullopt;
    try {
        Reader reader(bytes.substr(bodyBegin));
        const BaselineHeading heading = headingOf(reader);
        BaselineBuilder builder;
        reader.files(heading.fileCount, builder);
        return KeptBaseline{.last = heading.last,
                            .baseline = std::make_shared<Baseline>(builder.build())};
    } catch (const Reader::Damaged&) {
        return std::nullopt;
    }
}

}  // namespace qrv
