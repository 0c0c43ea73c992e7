#include <engine/base/WithoutExceptions.h>
#include <engine/maintenance/HistoryRebuild.h>
#include <engine/operations/RebuildHistory.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/RepositoryLock.h>
#include <engine/repository/SharedMode.h>

namespace qrv {

// Not by opening the repository as all others do, which needs its history.
Expected<Rebuilt> rebuildHistory(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<Rebuilt> {
        const Expected<RepositoryPlace> place = openRepository(folder, caller);
        if (!place)
            return place.error();
        const SharedMode shared(place->folder, caller);
        const Expected<sys::Lock> lock = lockForChange(place->folder, place->root);
        if (!lock)
            return lock.error();
        return rebuildHistory(place->root, place->folder, caller.action());
    });
}

}  // namespace qrv
