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
    Expected(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Expected(ErrorMessage error) : content_(std::in_place_index<1>, std::move(error)) {}

    bool hasValue() const { return content_.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    T& value() & { return require<0>(content_, noValue); }
    const T& value() const& { return require<0>(content_, noValue); }
    T&& value() && { return std::move(require<0>(content_, noValue)); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const ErrorMessage& error() const& { return require<1>(content_, noError); }
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
    Expected() = default;
    Expected(ErrorMessage error) : error_(std::move(error)) {}

    bool hasValue() const { return !error_.has_value(); }
    explicit operator bool() const { return hasValue(); }

    void value() const {
        if (error_)
            throw std::logic_error("Expected: there is an error, not a value");
    }
    void operator*() const { value(); }

    const ErrorMessage& error() const {
        if (!error_)
            throw std::logic_error("Expected: there is a value, not an error");
        return *error_;
    }

private:
    std::optional<ErrorMessage> error_;
};
