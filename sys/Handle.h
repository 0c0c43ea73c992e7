#pragma once

#include <system_error>
#include <utility>

namespace sys {

/// Owns an open descriptor of the system, or none.
class Handle {
public:
    explicit Handle(int number = -1) : number_(number) {}
    Handle(Handle&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    /// Leaves `errno` as it is.
    ~Handle();

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    /// Owns none afterwards. An error means that the system reports, only now, that something
    /// written was lost.
    [[nodiscard]] std::error_code close();
    /// Hands the descriptor over to the caller.
    [[nodiscard]] int giveAway() { return std::exchange(number_, -1); }

private:
    int number_;
};

}  // namespace sys
