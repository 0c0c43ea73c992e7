#include <cli/terminal/Progress.h>
#include <engine/base/Translation.h>
#include <sys/Terminal.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace qrv::cli {

namespace {

constexpr std::chrono::milliseconds beforeTheFirst{500};
constexpr std::chrono::milliseconds betweenTwo{100};
constexpr std::int64_t thousand = 1000;

void print(const std::string& bytes) {
    // Whoever cannot be shown the progress does not miss it.
    static_cast<void>(std::fwrite(bytes.data(), 1, bytes.size(), stderr));
}

}  // namespace

Progress::Progress(const OdString& title, std::size_t total)
    : title_(title),
      total_(total),
      isTerminal_(sys::isTerminal(sys::Stream::error)),
      begin_(Clock::now()),
      next_(begin_ + beforeTheFirst) {
}

Progress::~Progress() {
    if (isShown_)
        print("\r\x1B[K");
}

void Progress::add(std::int64_t sizeBytes) {
    ++count_;
    sizeBytes_ += sizeBytes;
    if (!isTerminal_)
        return;
    const Clock::time_point now = Clock::now();
    if (now < next_)
        return;
    next_ = now + betweenTwo;
    show(now);
}

void Progress::show(Clock::time_point now) {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - begin_);
    const std::int64_t perSecond =
        sizeBytes_ * thousand / std::max<std::int64_t>(elapsed.count(), 1);
    OdString line = total_ == 0
                        ? OdString::format(tr(L"%ls: %i files"), title_, count_)
                        : OdString::format(tr(L"%ls: %i of %i files"), title_, count_, total_);
    line += OdString::format(tr(L", %ls, %ls/s"), sizeText(sizeBytes_), sizeText(perSecond));
    line = line.left(sys::terminalWidth(sys::Stream::error) - 1);
    print("\r" + line.toNarrow() + "\x1B[K");
    isShown_ = true;
}

OdString sizeText(std::int64_t sizeBytes) {
    static constexpr std::array<const wchar_t*, 4> units = {L"KB", L"MB", L"GB", L"TB"};
    if (sizeBytes < thousand)
        return OdString::format(tr(L"%i bytes"), sizeBytes);
    std::size_t unit = 0;
    std::int64_t tenths = sizeBytes / (thousand / 10);
    for (; tenths >= 10 * thousand && unit + 1 < units.size(); ++unit)
        tenths /= thousand;
    if (tenths >= 100)
        return OdString::format(L"%i %ls", tenths / 10, units[unit]);
    return OdString::format(L"%i.%i %ls", tenths / 10, tenths % 10, units[unit]);
}

}  // namespace qrv::cli
