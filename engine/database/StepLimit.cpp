#include <engine/database/StepLimitInternal.h>

#include <sqlite3.h>

namespace qrv {

namespace {

constexpr std::int64_t stepsOfRound = 1000;
/// Reading a schema of ours takes some hundred.
constexpr std::int64_t mostToOpen = 20'000;
/// A walk over all rows of a table takes less than one step for each byte of the file, and checking
/// each of them against its indexes less than four.
constexpr std::int64_t mostForByte = 16;
/// What was written and is not in the file yet, at most two megabytes, needs steps, too.
constexpr std::int64_t mostForAny = 4'000'000;

}  // namespace

void StepLimit::watch(sqlite3* connection) {
    sqlite3_progress_handler(connection, stepsOfRound, &onProgress, this);
}

int StepLimit::onProgress(void* self) {
    auto& limit = *static_cast<StepLimit*>(self);
    if (limit.rounds_ == nullptr)
        return 0;
    ++*limit.rounds_;
    return limit.isExceeded() ? 1 : 0;
}

bool StepLimit::isExceeded() const {
    const std::int64_t steps = *rounds_ * stepsOfRound;
    if (isOpening_)
        return steps > mostToOpen;
    if (steps <= mostForAny)
        return false;
    const sys::Outcome<sys::FileStatus> file = folder_.status(name_);
    return !file || steps - mostForAny > file->sizeBytes * mostForByte;
}

}  // namespace qrv
