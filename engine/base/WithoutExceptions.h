#pragma once

#include <common/base/Expected.h>

#include <exception>

namespace qrv {

/// The message of an exception that was caught and could be answered by nobody on the way.
ErrorMessage messageOf(const std::exception& caught);

/// What `action` gives, an `Expected`; the message of an exception in its place.
template <class Action>
auto withoutExceptions(const Action& action) -> decltype(action()) try {
    return action();
} catch (const std::exception& caught) {
    return messageOf(caught);
}

}  // namespace qrv
