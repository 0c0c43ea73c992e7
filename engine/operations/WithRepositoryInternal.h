#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/WithoutExceptions.h>
#include <engine/worktree/Workspace.h>

#include <memory>
#include <string>
#include <utility>

namespace qrv {

/// Opens the repository that holds `folder`, does `action` with its workspace, and closes it. Fails
/// as `Workspace::open`, the action and `Workspace::close` do, and with the message of an exception
/// in its place. When the action failed, nobody is told whether a state that it changed was
/// written.
template <class Action>
auto withRepository(const std::string& folder, Workspace::Use use, Caller& caller,
                    const Action& action) {
    using Result = decltype(action(std::declval<Workspace&>()));
    return withoutExceptions([&]() -> Result {
        const Expected<std::unique_ptr<Workspace>> workspace = Workspace::open(folder, use, caller);
        if (!workspace)
            return workspace.error();
        Result result = action(**workspace);
        if (!result)
            return result;
        if (const Expected<void> closed = (*workspace)->close(); !closed)
            return closed.error();
        return result;
    });
}

}  // namespace qrv
