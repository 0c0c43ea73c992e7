#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdError.h>
#include <platform/kernel/OdString.h>

namespace common {

/// A JSON record lacks a member or has one of the wrong type. Carries only its text.
class QRV_COMMON_EXPORT JsonParseError : public OdError {
public:
    /// `message` is the whole text for the user.
    JsonParseError(const OdString& message);
    JsonParseError(const JsonParseError& other);
    JsonParseError(JsonParseError&& other) noexcept;
    JsonParseError& operator=(const JsonParseError& other);
    JsonParseError& operator=(JsonParseError&& other) noexcept;
    ~JsonParseError() override;
};

}  // namespace common
