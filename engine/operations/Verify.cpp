#include <engine/base/WithoutExceptions.h>
#include <engine/maintenance/VerifyRepository.h>
#include <engine/operations/Verify.h>
#include <engine/repository/FindRepository.h>

namespace qrv {

Expected<Verified> verify(const std::string& folder, const VerifyRequest& request, Caller& caller) {
    return withoutExceptions([&]() -> Expected<Verified> {
        const Expected<RepositoryPlace> place = openRepository(folder, caller);
        if (!place)
            return place.error();
        const CheckDepth depth =
            request.onlyStructure ? CheckDepth::structure : CheckDepth::contents;
        return Verified{.root = place->root.path(),
                        .found = verifyRepository(*place, depth, caller)};
    });
}

}  // namespace qrv
