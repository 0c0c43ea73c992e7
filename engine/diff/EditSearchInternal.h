#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qrv {

/// For each element of two sequences, whether it stays when the one becomes the other.
struct KeptElements {
    std::vector<bool> before;
    std::vector<bool> after;
};

/// A long common subsequence, in at most linear memory and time: the longest one, unless more than
/// a few hundred edits lie between two places that both have. When a bound of the whole work is
/// reached, nothing is kept of what was not compared until then. Each sequence has less than 2^31
/// elements.
KeptElements findKept(std::span<const std::uint32_t> before, std::span<const std::uint32_t> after);

}  // namespace qrv
