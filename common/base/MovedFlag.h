#pragma once

#include <utility>

namespace common {

/// A flag that a move takes away: the moved-from object is left with false. For "must be written
/// back" flags, so that an emptied object never overwrites the file of the one that took its
/// content.
class MovedFlag {
public:
    MovedFlag(bool isSet = false) : isSet_(isSet) {}
    MovedFlag(const MovedFlag&) = default;
    MovedFlag(MovedFlag&& other) noexcept : isSet_(std::exchange(other.isSet_, false)) {}
    MovedFlag& operator=(const MovedFlag&) = default;
    MovedFlag& operator=(MovedFlag&& other) noexcept {
        isSet_ = std::exchange(other.isSet_, false);
        return *this;
    }
    ~MovedFlag() = default;

    operator bool() const { return isSet_; }

private:
    bool isSet_;
};

}  // namespace common
