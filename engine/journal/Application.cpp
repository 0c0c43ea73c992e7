#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/Application.h>
#include <engine/journal/FileStep.h>
#include <engine/paths/CheckedUrl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace qrv {

namespace {

/// One flush serves so many new files. Until they have their names the old ones lie beside them, so
/// that both take room.
constexpr std::size_t mostFilesAtOnce = 20'000;
constexpr std::int64_t mostBytesAtOnce = std::int64_t{1} << 30;

/// How many of the steps go together: one at least.
std::size_t countAtOnce(std::span<const TreeStep* const> steps) {
    std::size_t count = 0;
    std::int64_t sizeBytes = 0;
    while (count < std::min(steps.size(), mostFilesAtOnce) && sizeBytes < mostBytesAtOnce)
        sizeBytes += steps[count++]->sizeBytes;
    return count;
}

/// Does steps of one entry, and notes what became of their files.
class Steps {
public:
    Steps(WorkingTree& workingTree, const JournalEntry& entry, const Sightings& sightings,
          Unexpected unexpected)
        : workingTree_(workingTree),
          entry_(entry),
          sightings_(sightings),
          unexpected_(unexpected) {}

    Expected<AppliedStamps> apply(const std::vector<const TreeStep*>& steps) {
        std::vector<const TreeStep*> written;
        for (const TreeStep* step : steps) {
            if (!step->after.isEmpty())
                written.push_back(step);
            else if (const Expected<void> removed = remove(*step); !removed)
                return removed.error();
        }
        const std::unique_ptr<Work> progress =
            workingTree_.caller().beginWork(tr(L"Writing"), written.size());
        for (std::span<const TreeStep* const> rest = written; !rest.empty();) {
            const std::span<const TreeStep* const> part = rest.first(countAtOnce(rest));
            if (const Expected<void> done = write(part, *progress); !done)
                return done.error();
            rest = rest.subspan(part.size());
        }
        // The names, too: whoever forgets the entry next cannot do it again after a power cut.
        if (const Expected<void> flushed = flush(); !flushed)
            return flushed.error();
        return std::move(stamps_);
    }

private:
    Expected<void> flush() {
        if (const std::error_code error = workingTree_.folder().flushFileSystem())
            return systemFailure(tr(L"The files of '%ls' cannot be written: %ls"),
                                 workingTree_.root().path(), error);
        return {};
    }

    StepTarget targetOf(const TreeStep& step) const {
        const auto seen = sightings_.find(step.path);
        return StepTarget{
            .path = step.path,
            .digest = digestOfUrl(step.before),
            .seen = seen == sightings_.end() ? std::nullopt : std::optional(seen->second),
            .position = static_cast<std::size_t>(&step - entry_.steps.data())};
    }

    Expected<void> remove(const TreeStep& step) {
        const Expected<StepEnd> end =
            removeFile(workingTree_.folder(), targetOf(step), workingTree_.caller());
        return end ? note(step, *end) : end.error();
    }

    /// All contents are on the disk before the first file changes.
    Expected<void> write(std::span<const TreeStep* const> steps, Work& progress) {
        std::vector<sys::NewFile> files;
        files.reserve(steps.size());
        for (const TreeStep* step : steps) {
            Expected<sys::NewFile> file =
                workingTree_.repository()
                    .storages()
                    .ofUrl(step->after)
                    .prepare(workingTree_.root(), step->after, step->path);
            if (!file)
                return file.error();
            files.push_back(std::move(*file));
            progress.add(step->sizeBytes);
        }
        if (Expected<void> flushed = flush(); !flushed)
            return flushed;
        for (std::size_t index = 0; index < files.size(); ++index) {
            const Expected<StepEnd> end = writeFile(workingTree_.folder(), targetOf(*steps[index]),
                                                    std::move(files[index]), workingTree_.caller());
            Expected<void> noted = end ? note(*steps[index], *end) : end.error();
            if (!noted)
                return noted;
        }
        return {};
    }

    Expected<void> note(const TreeStep& step, const StepEnd& end) {
        if (end.kind == StepEnd::Kind::done) {
            if (end.written)
                stamps_.emplace(step.path, *end.written);
            return {};
        }
        if (unexpected_ == Unexpected::fail)
            return ErrorMessage{OdString::format(
                tr(L"Another program changed '%ls' meanwhile; what it saved stays, and nothing "
                   L"else is changed"),
                printable(step.path))};
        tellLeft(step.path, workingTree_.caller());
        return {};
    }

    WorkingTree& workingTree_;
    const JournalEntry& entry_;
    const Sightings& sightings_;
    Unexpected unexpected_;
    AppliedStamps stamps_;
};

}  // namespace

void tellLeft(const OdString& path, Caller& caller) {
    caller.note(
        OdString::format(tr(L"Note: '%ls' was changed by somebody meanwhile and is left as it is"),
                         printable(path)));
}

Expected<AppliedStamps> applySteps(WorkingTree& workingTree, const JournalEntry& entry,
                                   const std::vector<const TreeStep*>& steps,
                                   const Sightings& sightings, Unexpected unexpected) {
    return Steps(workingTree, entry, sightings, unexpected).apply(steps);
}

Expected<AppliedStamps> applyAll(WorkingTree& workingTree, const JournalEntry& entry,
                                 const Sightings& sightings) {
    std::vector<const TreeStep*> steps;
    for (const TreeStep& step : entry.steps)
        steps.push_back(&step);
    return applySteps(workingTree, entry, steps, sightings, Unexpected::fail);
}

}  // namespace qrv
