#pragma once

#include <common/repository/IoInterface.h>

#include <vector>

namespace qrv_test {

/// A host that accepts every path and keeps the results it is told.
class RecordingIo : public common::IoInterface {
public:
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void> result) const override {
        results.push_back(std::move(result));
    }

    mutable std::vector<Expected<void>> results;
};

}  // namespace qrv_test
