#pragma once

#include <common/state/State.h>

#include <cstdint>
#include <random>

namespace qrv_test {

/// States of all sizes and with texts of all kinds, the same in each run. All can be written and
/// read back.
class RandomStates {
public:
    common::State next();
    /// A number in [0, end), from the same source.
    int below(int end) { return static_cast<int>(engine_() % static_cast<unsigned>(end)); }

private:
    std::int64_t number();
    common::FileChange change() { return static_cast<common::FileChange>(below(4)); }
    wchar_t unit();
    OdString text();
    OdArray<OdDbHandle> handleList();
    common::DiffHandles handles();

    std::mt19937_64 engine_{20240305};
};

}  // namespace qrv_test
