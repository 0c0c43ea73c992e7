#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <compare>
#include <concepts>
#include <cstdint>

/// The 64-bit handle of a drawing object.
class QRV_PLATFORM_EXPORT OdDbHandle {
public:
    OdDbHandle() = default;
    /// A template, so that a literal 0 is a number and no null pointer.
    template <std::integral Integer>
    OdDbHandle(Integer number) : number_(static_cast<std::uint64_t>(number)) {}
    /// From hexadecimal digits of either case, up to the first character that is none; no digits
    /// give 0, more than 64 bits the largest handle.
    OdDbHandle(const OdString& hexadecimal);
    /// The same from a literal.
    OdDbHandle(const wchar_t* hexadecimal) : OdDbHandle(OdString(hexadecimal)) {}

    /// Upper-case hexadecimal digits without a leading zero; "0" for handle 0.
    OdString ascii() const;

    friend bool operator==(const OdDbHandle&, const OdDbHandle&) = default;
    friend std::strong_ordering operator<=>(const OdDbHandle&, const OdDbHandle&) = default;

private:
    std::uint64_t number_ = 0;
};
