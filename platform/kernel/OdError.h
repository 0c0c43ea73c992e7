#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <exception>
#include <string>

/// The kernel's exception: carries a text for the user.
class QRV_PLATFORM_EXPORT OdError : public std::exception {
public:
    /// `description` is the whole text for the user.
    explicit OdError(const OdString& description);
    OdError(const OdError&) = default;
    OdError(OdError&&) = default;
    OdError& operator=(const OdError&) = default;
    OdError& operator=(OdError&&) = default;
    ~OdError() override;

    /// The text for the user.
    const OdString& description() const { return description_; }
    /// The description as UTF-8.
    const char* what() const noexcept override { return descriptionUtf8_.c_str(); }

private:
    OdString description_;
    std::string descriptionUtf8_;
};
