#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/WithoutExceptions.h>
#include <engine/journal/OpenTree.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <string>
#include <utility>

namespace qrv {

/// Does `action` with the working tree that `open` gives, and closes it. Fails as these and
/// `WorkingTree::close` do, and with the message of an exception in its place. When the action
/// failed, nobody is told whether a state that it changed was written.
template <class Open, class Action>
auto withOpened(const Open& open, const Action& action) {
    using Result = decltype(action(std::declval<WorkingTree&>()));
    return withoutExceptions([&]() -> Result {
        const Expected<std::unique_ptr<WorkingTree>> workingTree = open();
        if (!workingTree)
            return workingTree.error();
        Result result = action(**workingTree);
        if (!result)
            return result;
        if (const Expected<void> closed = (*workingTree)->close(); !closed)
            return closed.error();
        return result;
    });
}

/// The same with the repository that holds `folder`, opened by `openTree`.
template <class Action>
auto withRepository(const std::string& folder, Repository::Use use, Caller& caller,
                    const Action& action, WorkingTree::Scan scan = WorkingTree::Scan::later) {
    return withOpened([&] { return openTree(folder, use, caller, scan); }, action);
}

/// Does `action`, which only looks, with the repository that holds `folder`. What it found by
/// reading is only remembered to be quicker next time: a failure of that is told and no more.
template <class Action>
auto withLook(const std::string& folder, Caller& caller, const Action& action,
              WorkingTree::Scan scan = WorkingTree::Scan::later) {
    using Result = decltype(action(std::declval<WorkingTree&>()));
    return withoutExceptions([&]() -> Result {
        const Expected<std::unique_ptr<WorkingTree>> workingTree =
            openTree(folder, Repository::Use::look, caller, scan);
        if (!workingTree)
            return workingTree.error();
        Result result = action(**workingTree);
        if (!result)
            return result;
        if (const Expected<void> closed = (*workingTree)->close(); !closed)
            caller.note(closed.error().message);
        return result;
    });
}

}  // namespace qrv
