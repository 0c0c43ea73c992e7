#include <cli/terminal/Message.h>
#include <cli/text/StagingWarnings.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <cstdint>

namespace qrv::cli {

namespace {

constexpr std::int64_t bytesPerMegabyte = 1'000'000;
/// More notes of one kind are only counted.
constexpr int mostOfAKind = 5;

/// A limit that the size is below, as a round number.
std::int64_t roundedUp(std::int64_t sizeBytes) {
    constexpr std::int64_t step = 100;
    return (sizeBytes / bytesPerMegabyte / step + 1) * step;
}

/// Notes of one kind.
class Notes {
public:
    Notes() = default;
    Notes(const Notes&) = delete;
    Notes& operator=(const Notes&) = delete;
    ~Notes() {
        if (count_ > mostOfAKind)
            printMessage(
                OdString::format(tr(L"Note: and likewise for others: %i"), count_ - mostOfAKind));
    }

    void add(const OdString& note) {
        if (++count_ <= mostOfAKind)
            printMessage(note);
    }

private:
    int count_ = 0;
};

void warnOfSizes(const Added& added, std::int64_t largeCommitMegabytes) {
    Notes notes;
    for (const LargeFile& file : added.large)
        notes.add(OdString::format(tr(L"Note: '%ls' has %i megabytes, and every version of it "
                                      L"is kept (qrv config large-file %i allows that)"),
                                   printable(file.path), file.sizeBytes / bytesPerMegabyte,
                                   roundedUp(file.sizeBytes)));
    if (largeCommitMegabytes > 0 && added.stagedBytes > largeCommitMegabytes * bytesPerMegabyte)
        printMessage(OdString::format(tr(L"Note: the next commit has %i megabytes (qrv config "
                                         L"large-commit %i allows that)"),
                                      added.stagedBytes / bytesPerMegabyte,
                                      roundedUp(added.stagedBytes)));
}

void warnOfNames(const Added& added) {
    Notes clashes;
    Notes unportable;
    for (const OddName& name : added.oddNames) {
        if (name.other.isEmpty())
            unportable.add(OdString::format(tr(L"Note: Windows cannot hold a file of the name "
                                               L"'%ls'"),
                                            printable(name.path)));
        else
            clashes.add(OdString::format(tr(L"Note: '%ls' and '%ls' are one name on systems that "
                                            L"do not tell letter case or accents apart"),
                                         printable(name.path), printable(name.other)));
    }
}

void warnOfOpenDrawings(const Added& added) {
    Notes notes;
    for (const OpenDrawing& drawing : added.open)
        notes.add(OdString::format(tr(L"Note: somebody seems to have '%ls' open ('%ls' lies "
                                      L"beside it); what is not saved is not committed"),
                                   printable(drawing.path), printable(drawing.lockPath)));
}

}  // namespace

std::int64_t largeFileBytes(const Settings& settings) {
    return settings.largeFileMegabytes * bytesPerMegabyte;
}

void warnOfStaged(const Added& added, const Settings& settings) {
    warnOfSizes(added, settings.largeCommitMegabytes);
    warnOfNames(added);
    warnOfOpenDrawings(added);
}

}  // namespace qrv::cli
