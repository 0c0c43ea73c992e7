#include <engine/worktree/Ticks.h>

namespace qrv {

namespace {

constexpr std::int64_t nanosecondsPerTick = 100;
// From 1601-01-01 to 1970-01-01.
constexpr std::int64_t ticksBefore1970 = 116'444'736'000'000'000;

}  // namespace

std::int64_t toTicks(std::int64_t modifiedNs) {
    // Towards the past also before 1970, as the library rounds.
    const std::int64_t remainder = modifiedNs % nanosecondsPerTick;
    const std::int64_t whole = modifiedNs / nanosecondsPerTick - (remainder < 0 ? 1 : 0);
    return whole + ticksBefore1970;
}

}  // namespace qrv
