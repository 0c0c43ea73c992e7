#pragma once

#include <common/base/Export.h>
#include <common/json/ValueError.h>

#include <concepts>
#include <cstdint>
#include <map>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace jsonlib::json {

template <class Config>
class Value_impl;

/// The value's configuration: objects are maps, sorted by the code units of their keys.
template <class String>
struct QRV_COMMON_EXPORT Config_map {
    using String_type = String;                                    ///< of keys and texts
    using Object_type = std::map<String, Value_impl<Config_map>>;  ///< members by their keys
    using Array_type = std::vector<Value_impl<Config_map>>;        ///< elements in order
};

/// A JSON value: an object, an array, a text, a boolean, a 64-bit integer, a real number or null.
///
///     Object entry;
///     entry[L"path"] = L"plan.dwg";
///     const std::wstring& path = entry.at(L"path").getString();
///
/// A value may be nested to any depth that memory holds: copying, comparing and destroying it walk
/// without recursion. A moved-from value is null. A text is kept as UTF-16 code units, however it
/// came; a key should be given as such.
template <class Config>
class QRV_COMMON_EXPORT Value_impl {
public:
    using String = typename Config::String_type;  ///< a text
    using Object = typename Config::Object_type;  ///< members by their keys
    using Array = typename Config::Array_type;    ///< elements in order

    /// Null.
    Value_impl() noexcept = default;
    Value_impl(Object object);  ///< an object
    Value_impl(Array array);    ///< an array
    Value_impl(String string);  ///< a text
    /// Up to the terminating NUL. A null pointer gives the empty text.
    Value_impl(const wchar_t* string);
    Value_impl(bool boolean);           ///< a boolean
    Value_impl(int integer);            ///< an integer
    Value_impl(std::int64_t integer);   ///< an integer
    Value_impl(std::uint64_t integer);  ///< an integer, unsigned
    Value_impl(double real);            ///< a real number
    /// Any other pointer would silently become `true`.
    template <class Pointee>
    requires(!std::same_as<std::remove_cv_t<Pointee>, wchar_t>) Value_impl(Pointee*)
    = delete;

    Value_impl(const Value_impl& other);
    Value_impl(Value_impl&& other) noexcept { take(other); }
    /// When memory ends, this value stays as it was.
    Value_impl& operator=(const Value_impl& other);
    /// Also from a part of this value.
    Value_impl& operator=(Value_impl&& other) noexcept {
        Value_impl taken(std::move(other));
        clear();
        take(taken);
        return *this;
    }
    ~Value_impl() { clear(); }

    /// Which kind of value this is.
    Value_type type() const { return type_; }
    /// Whether an integer was made or read as unsigned; false for every other kind.
    bool isUnsigned() const { return isUnsigned_; }

    /// The content as the named kind. A value of another kind throws `ValueError`.
    const Object& getObject() const;
    Object& getObject();              ///< for changing
    const Array& getArray() const;    ///< or `ValueError`
    Array& getArray();                ///< for changing
    const String& getString() const;  ///< or `ValueError`
    bool getBool() const;             ///< or `ValueError`
    /// The low 32 bits of the integer.
    int getInt() const;
    /// The integer's 64 bits, read as signed.
    std::int64_t getInt64() const;
    /// The integer's 64 bits, read as unsigned.
    std::uint64_t getUInt64() const;
    /// The real; an integer is converted.
    double getReal() const;

    /// Same kind and equal contents. Integers are equal when they denote the same number.
    friend bool operator==(const Value_impl& left, const Value_impl& right) {
        return left.equals(right);
    }

private:
    // Containers live in boxes of their own so that a value is small and moves without allocating.
    struct ObjectBox;
    struct ArrayBox;
    struct Destruction;
    struct Copy;
    struct Comparison;

    union Plain {
        ObjectBox* object;
        ArrayBox* array;
        bool boolean;
        std::int64_t integer;
        double real;
    };
    union Payload {
        Payload() noexcept : plain{} {}
        // Not defaulted, which would delete it: the value knows which member lives.
        ~Payload() {}  // NOLINT(modernize-use-equals-default)
        Plain plain;
        String string;
    };

    void clear() noexcept;
    void clearContainer() noexcept;
    void take(Value_impl& other) noexcept;
    bool equals(const Value_impl& other) const;
    void require(Value_type expected) const;

    Value_type type_ = Value_type::null;
    Payload payload_;
    bool isUnsigned_ = false;
};

using Value = Value_impl<Config_map<std::wstring>>;
using Object = Value::Object;
using Array = Value::Array;

// Moving and destroying stand here because containers of values spend their time in them.
template <class Config>
void Value_impl<Config>::clear() noexcept {
    if (type_ == Value_type::string)
        payload_.string.~String();
    else if (type_ <= Value_type::array)
        clearContainer();
    type_ = Value_type::null;
    isUnsigned_ = false;
}

template <class Config>
void Value_impl<Config>::take(Value_impl& other) noexcept {
    if (other.type_ == Value_type::string) {
        new (&payload_.string) String(std::move(other.payload_.string));
        other.payload_.string.~String();
    } else {
        payload_.plain = other.payload_.plain;
    }
    type_ = std::exchange(other.type_, Value_type::null);
    isUnsigned_ = std::exchange(other.isUnsigned_, false);
}

extern template class Value_impl<Config_map<std::wstring>>;

}  // namespace jsonlib::json
