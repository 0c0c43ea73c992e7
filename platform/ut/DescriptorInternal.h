#pragma once

#include <utility>

namespace ut {

/// Owns an open descriptor, or none (-1).
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    int get() const { return number_; }
    /// Hands the descriptor over to the caller.
    int release() { return std::exchange(number_, -1); }
    /// False when the system reports, only now, that something written was lost.
    bool close();

private:
    int number_;
};

}  // namespace ut
