#include <engine/base/Printable.h>
#include <engine/base/SortedLookup.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/Unseen.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

bool isListed(const OdString& path, const std::vector<Unseen>& sorted) {
    return findSorted(sorted, [&path](const Unseen& unseen) { return unseen.path <=> path; }) !=
           nullptr;
}

/// The root has none above it.
bool isBelowListed(const OdString& path, const std::vector<Unseen>& sorted) {
    OdString above = path;
    while (!above.isEmpty()) {
        above = parentOf(above);
        if (isListed(above, sorted))
            return true;
    }
    return false;
}

}  // namespace

std::vector<Unseen> sortedUnseen(std::vector<Unseen> unseen) {
    std::stable_sort(unseen.begin(), unseen.end(),
                     [](const Unseen& one, const Unseen& other) { return one.path < other.path; });
    const auto isSame = [](const Unseen& one, const Unseen& other) {
        return one.path == other.path;
    };
    unseen.erase(std::unique(unseen.begin(), unseen.end(), isSame), unseen.end());
    std::vector<Unseen> outermost;
    for (const Unseen& each : unseen) {
        // What lies above comes before it in the order.
        if (!isBelowListed(each.path, outermost))
            outermost.push_back(each);
    }
    return outermost;
}

bool isUnseen(const OdString& path, const std::vector<Unseen>& unseen) {
    return !unseen.empty() && (isListed(path, unseen) || isBelowListed(path, unseen));
}

OdString textOf(const Unseen& unseen) {
    const OdString name = unseen.path.isEmpty() ? OdString(L".") : printable(unseen.path);
    return name + L": " + OdString(unseen.cause.message().c_str());
}

}  // namespace qrv
