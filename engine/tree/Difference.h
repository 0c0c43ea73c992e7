#pragma once

#include <compare>

namespace qrv {

/// Calls `visit(path, before, after)` for each file that the two trees do not have alike, in the
/// order of the paths. `before` and `after` point to the file on the two sides, and are null where
/// it is not there.
template <class Before, class After, class Visit>
void visitDifferences(const Before& before, const After& after, const Visit& visit) {
    auto old = before.begin();
    auto now = after.begin();
    while (old != before.end() || now != after.end()) {
        const std::strong_ordering order = now == after.end()    ? std::strong_ordering::less
                                           : old == before.end() ? std::strong_ordering::greater
                                                                 : old->first <=> now->first;
        if (order < 0)
            visit(old->first, &old->second, nullptr);
        else if (order > 0)
            visit(now->first, nullptr, &now->second);
        else if (old->second.contents != now->second.contents)
            visit(now->first, &old->second, &now->second);
        if (order <= 0)
            ++old;
        if (order >= 0)
            ++now;
    }
}

}  // namespace qrv
