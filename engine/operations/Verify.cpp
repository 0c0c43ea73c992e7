#include <engine/base/WithoutExceptions.h>
#include <engine/maintenance/VerifyRepository.h>
#include <engine/operations/Verify.h>
#include <engine/repository/FindRepository.h>

namespace qrv {

Expected<Verified> verify(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<Verified> {
        const Expected<RepositoryPlace> place = openRepository(folder, caller);
        if (!place)
            return place.error();
        return Verified{.root = place->root.path(), .found = verifyRepository(*place, caller)};
    });
}

}  // namespace qrv
