#pragma once

#include <common/base/ErrorMessage.h>

#include <optional>
#include <stdexcept>
#include <utility>
#include <variant>

/// What an operation gives that can fail for the user's reasons: a value or an `ErrorMessage`.
///
///     Expected<RootPath> root = RootPath::get(folder, false);
///     if (!root)
///         return root.error();
///     use(*root);
///
/// Asking for the side that is not there is a mistake of the caller and throws `std::logic_error`.
template <class T>
class [[nodiscard]] Expected {
public:
    /// A success.
    Expected(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    /// A failure.
    Expected(ErrorMessage error) : content_(std::in_place_index<1>, std::move(error)) {}

    /// Whether there is a value.
    bool hasValue() const { return content_.index() == 0; }
    /// The same as `hasValue`.
    explicit operator bool() const { return hasValue(); }

    /// The value, for reading and changing. This and everything below that gives the value throws
    /// `std::logic_error` when there is an error instead.
    T& value() & { return require<0>(content_, noValue); }
    /// The value for reading.
    const T& value() const& { return require<0>(content_, noValue); }
    /// The value of a temporary result, to be taken away.
    T&& value() && { return std::move(require<0>(content_, noValue)); }
    /// The same as `value`.
    T& operator*() & { return value(); }
    /// The same as `value`.
    const T& operator*() const& { return value(); }
    /// The same as `value`.
    T&& operator*() && { return std::move(*this).value(); }
    /// A member of the value.
    T* operator->() { return &value(); }
    /// A member of the value, for reading.
    const T* operator->() const { return &value(); }

    /// The error. Throws `std::logic_error` when there is a value instead.
    const ErrorMessage& error() const& { return require<1>(content_, noError); }
    /// The error of a temporary result, to be taken away.
    ErrorMessage&& error() && { return std::move(require<1>(content_, noError)); }

private:
    static constexpr const char* noValue = "Expected: there is an error, not a value";
    static constexpr const char* noError = "Expected: there is a value, not an error";

    template <std::size_t Side, class Content>
    static auto& require(Content& content, const char* complaint) {
        if (content.index() != Side)
            throw std::logic_error(complaint);
        return *std::get_if<Side>(&content);
    }

    std::variant<T, ErrorMessage> content_;
};

/// Success, or an `ErrorMessage`.
template <>
class [[nodiscard]] Expected<void> {
public:
    /// A success.
    Expected() = default;
    /// A failure.
    Expected(ErrorMessage error) : error_(std::move(error)) {}

    /// Whether it was a success.
    bool hasValue() const { return !error_.has_value(); }
    /// The same as `hasValue`.
    explicit operator bool() const { return hasValue(); }

    /// Throws `std::logic_error` when there is an error; gives nothing.
    void value() const {
        if (error_)
            throw std::logic_error("Expected: there is an error, not a value");
    }
    /// The same as `value`.
    void operator*() const { value(); }

    /// The error. Throws `std::logic_error` when there is none.
    const ErrorMessage& error() const {
        if (!error_)
            throw std::logic_error("Expected: there is a value, not an error");
        return *error_;
    }

private:
    std::optional<ErrorMessage> error_;
};
