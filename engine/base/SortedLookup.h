#pragma once

#include <algorithm>

namespace qrv {

/// The element that is sought among elements in order; null when there is none. `compare(element)`
/// says whether the element comes before it, is it or comes after it: less than, equal to or
/// greater than 0.
template <class Elements, class Compare>
const typename Elements::value_type* findSorted(const Elements& elements, const Compare& compare) {
    const auto found =
        std::partition_point(elements.begin(), elements.end(),
                             [&compare](const auto& element) { return compare(element) < 0; });
    return found != elements.end() && compare(*found) == 0 ? &*found : nullptr;
}

}  // namespace qrv
