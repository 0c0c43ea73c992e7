#include <engine/maintenance/Collection.h>
#include <engine/operations/CollectGarbage.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/LogEntry.h>

namespace qrv {

Expected<Collected> collectGarbage(const std::string& folder, const CollectGarbageRequest& request,
                                   Caller& caller) {
    const Repository::Use use = request.onlyLook ? Repository::Use::look : Repository::Use::change;
    return withRepository(folder, use, caller, [&](WorkingTree& workingTree) {
        const CollectionMode mode =
            request.onlyLook ? CollectionMode::look : CollectionMode::change;
        Expected<Collected> collected = collectGarbage(workingTree.repository(), mode);
        if (collected && !request.onlyLook)
            logEvent(L"gc", workingTree.root(), workingTree.folder(), caller);
        return collected;
    });
}

}  // namespace qrv
