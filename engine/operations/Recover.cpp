#include <engine/history/JournalEntry.h>
#include <engine/journal/Interruption.h>
#include <engine/operations/Recover.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/LogEntry.h>

namespace qrv {

namespace {

InterruptedOperation described(const JournalEntry& entry) {
    InterruptedOperation operation = {entry.title, entry.recovery == JournalEntry::Recovery::finish,
                                      std::vector<OdString>()};
    operation.files.reserve(entry.steps.size());
    for (const TreeStep& step : entry.steps)
        operation.files.push_back(step.path);
    return operation;
}

const wchar_t* outcomeOf(const JournalEntry& entry, Recover what) {
    if (what == Recover::forget)
        return L"forgotten";
    return entry.recovery == JournalEntry::Recovery::finish ? L"finished" : L"taken-back";
}

Expected<void> settle(WorkingTree& workingTree, const JournalEntry& entry, Recover what) {
    if (what == Recover::look)
        return {};
    if (what == Recover::forget)
        forgetInterruption(workingTree);
    else if (Expected<void> settled = settleInterruption(workingTree); !settled)
        return settled;
    logEvent(OdString::format(L"recover: %ls %ls", entry.title, outcomeOf(entry, what)),
             workingTree.root(), workingTree.folder(), workingTree.caller());
    return {};
}

}  // namespace

Expected<std::optional<InterruptedOperation>> recover(const std::string& folder, Recover what,
                                                      Caller& caller) {
    using Answer = Expected<std::optional<InterruptedOperation>>;
    const auto open = [&] {
        // A change settles what was interrupted when it is opened, which is what this is asked for.
        return what == Recover::look ? openTree(folder, Repository::Use::look, caller)
                                     : WorkingTree::open(folder, Repository::Use::change, caller);
    };
    return withOpened(open, [what](WorkingTree& workingTree) -> Answer {
        const std::optional<JournalEntry> entry = notedEntry(workingTree.repository().history());
        if (!entry)
            return Answer(std::nullopt);
        if (const Expected<void> settled = settle(workingTree, *entry, what); !settled)
            return settled.error();
        return Answer(described(*entry));
    });
}

}  // namespace qrv
