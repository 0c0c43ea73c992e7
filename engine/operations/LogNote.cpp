#include <engine/base/WithoutExceptions.h>
#include <engine/operations/LogNote.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/LogEntry.h>
#include <engine/repository/SharedMode.h>

namespace qrv {

Expected<void> addLogNote(const std::string& folder, const OdString& note, Caller& caller) {
    return withoutExceptions([&]() -> Expected<void> {
        if (const std::string refusal = refusalOfNote(note.toNarrow()); !refusal.empty())
            return ErrorMessage{OdString::fromNarrow(refusal)};
        const Expected<RepositoryPlace> repository = openRepository(folder, caller);
        if (!repository)
            return repository.error();
        const SharedMode shared(repository->folder, caller);
        return addToLog(note, repository->root, repository->folder);
    });
}

}  // namespace qrv
