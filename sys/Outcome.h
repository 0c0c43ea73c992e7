#pragma once

#include <optional>
#include <system_error>
#include <utility>

namespace sys {

/// What a call to the system gave: a value, or why there is none.
template <class T>
class [[nodiscard]] Outcome {
public:
    Outcome(T value) : value_(std::move(value)) {}
    Outcome(std::error_code error) : error_(error) {}

    explicit operator bool() const { return value_.has_value(); }
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }
    std::error_code error() const { return error_; }

private:
    std::optional<T> value_;
    std::error_code error_;
};

/// Whether the error says that nothing of that name is there. Any other says that nobody could
/// look, which is no answer: what is unreadable now may hold everything.
inline bool meansAbsent(std::error_code error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

}  // namespace sys
