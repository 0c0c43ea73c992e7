#pragma once

#include <common/common.h>

/// What the library asks and tells this host. One object for each file that the library writes when
/// its owner ends, so that the host knows which of them failed.
class WriteReport final : public common::IoInterface {
public:
    /// `subject` names the file for the user and must outlive the report.
    explicit WriteReport(const char* subject) : subject_(subject) {}

    /// This host wants every file; another one may ask its user.
    bool acceptsPath(const OdString& path) const override;
    /// Prints that the file was written, or keeps the error: a destructor calls this, so nothing
    /// here may throw, and making a text could.
    void reportResult(Expected<void> result) const override;

    /// The last failure, or success. Complete once the cache or configuration has ended.
    const Expected<void>& outcome() const { return outcome_; }

private:
    const char* subject_;
    mutable Expected<void> outcome_;  // the library reports to a const object
};
