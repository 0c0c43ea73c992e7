#pragma once

#include <utility>

namespace common {

/// A flag that a move takes away: the moved-from object is left with false. For "must be written
/// back" flags, so that an emptied object never overwrites the file of the one that took its
/// content.
class MovedFlag {
public:
    /// Made from the value, also implicitly: `flag = true` sets it.
    MovedFlag(bool isSet = false) : isSet_(isSet) {}
    MovedFlag(const MovedFlag&) = default;
    /// Takes the value over and leaves false.
    MovedFlag(MovedFlag&& other) noexcept : isSet_(std::exchange(other.isSet_, false)) {}
    MovedFlag& operator=(const MovedFlag&) = default;
    /// Takes the value over and leaves false.
    MovedFlag& operator=(MovedFlag&& other) noexcept {
        isSet_ = std::exchange(other.isSet_, false);
        return *this;
    }
    ~MovedFlag() = default;

    /// The value.
    operator bool() const { return isSet_; }

private:
    bool isSet_;
};

}  // namespace common
