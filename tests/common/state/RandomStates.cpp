#include <tests/common/state/RandomStates.h>

#include <limits>
#include <string>

namespace qrv_test {

using common::DiffHandles;
using common::State;

State RandomStates::next() {
    State state;
    state.head.reference = text();
    for (int count = below(4); count > 0; --count)
        state.stagedFiles.emplace_back(text(), change());
    for (int count = below(4); count > 0; --count)
        state.renames.emplace(text(), text());
    for (int count = below(6); count > 0; --count)
        state.index[text()] = {number(), below(2) == 1};
    for (int count = below(4); count > 0; --count)
        state.conflicts.emplace_back(text(), text(), change(), change(), handles());
    return state;
}

std::int64_t RandomStates::number() {
    switch (below(4)) {
        case 0:
            return std::numeric_limits<std::int64_t>::min();
        case 1:
            return std::numeric_limits<std::int64_t>::max();
        case 2:
            return below(100) - 50;
        default:
            return static_cast<std::int64_t>(engine_());
    }
}

// Any unit may stand in a text: control characters, NUL, half a surrogate pair, a byte's stand-in.
wchar_t RandomStates::unit() {
    const std::wstring notable = L"\"\\/\b\f\n\r\t%{}[]:, \u00FC\u2028\uFEFF";
    switch (below(5)) {
        case 0:
            return static_cast<wchar_t>(below(0x10000));
        case 1:
            return static_cast<wchar_t>(0xD800 + below(0x800));
        case 2:
            return notable[static_cast<std::size_t>(below(static_cast<int>(notable.size())))];
        case 3:
            return static_cast<wchar_t>(below(0x20));
        default:
            return static_cast<wchar_t>(L'a' + below(26));
    }
}

OdString RandomStates::text() {
    std::wstring units;
    for (int count = below(12); count > 0; --count)
        units += unit();
    return OdString(units);
}

OdArray<OdDbHandle> RandomStates::handleList() {
    OdArray<OdDbHandle> list;
    for (int count = below(3); count > 0; --count)
        list.push_back(OdDbHandle(engine_() >> below(64)));
    return list;
}

DiffHandles RandomStates::handles() {
    DiffHandles handles;
    handles.modified = handleList();
    handles.locallyRemoved = handleList();
    handles.remotelyRemoved = handleList();
    // Blocks alone are lost on purpose.
    if (handles.hasHandles())
        handles.modifiedBlocks = handleList();
    return handles;
}

}  // namespace qrv_test
