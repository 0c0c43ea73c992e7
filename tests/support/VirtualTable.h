#pragma once

#include <cstddef>
#include <cstring>

namespace qrv_test {

/// Where a virtual operation stands in the table, counted from that of `first`.
template <class Operation, class First>
std::ptrdiff_t slotOf(Operation operation, First first) {
    const auto place = [](auto member) {
        std::ptrdiff_t offset;
        std::memcpy(&offset, &member, sizeof offset);
        return offset;
    };
    return (place(operation) - place(first)) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace qrv_test
