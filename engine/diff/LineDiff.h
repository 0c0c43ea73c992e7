#pragma once

#include <engine/diff/Lines.h>

#include <cstddef>
#include <vector>

namespace qrv {

/// Lines of the new text in place of lines of the old one. Either count may be 0.
struct LineChange {
    std::size_t oldFirst = 0;
    std::size_t oldCount = 0;
    std::size_t newFirst = 0;
    std::size_t newCount = 0;

    friend bool operator==(const LineChange&, const LineChange&) = default;
};

/// The changes that make `before` into `after`, in their order, with at least one common line
/// between two of them. As few lines as possible for texts that are not too different; what would
/// take too long to compare line by line is one change as a whole, and so are more than 25,000,000
/// lines between the common beginning and the common end. So the time grows no faster than
/// the texts, whatever they hold.
std::vector<LineChange> changesOfLines(const Lines& before, const Lines& after);

}  // namespace qrv
