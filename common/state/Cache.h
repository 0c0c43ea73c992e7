#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/base/MovedFlag.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/state/State.h>
#include <platform/ut/FileName.h>

#include <memory>

namespace common {

class Transaction;

/// The state of one repository while somebody works on it. When its last owner lets go, the state
/// file is written if the state may have changed, and the host is told how that went.
///
///     Expected<std::shared_ptr<Cache>> cache = Cache::get(root, io);
///     if (!cache)
///         return cache.error();
///     Transaction transaction = (*cache)->getTransaction();
///     updateIndex(path, **cache, root, true);
///     transaction.commit();
///
/// Two caches of one repository know nothing of each other: the one that ends last wins. A copy
/// writes the file too, if it was made after the first change; an object that was moved from writes
/// nothing.
class QRV_COMMON_EXPORT Cache {
public:
    /// Reads the state file of `root`. `io` must outlive the cache.
    ///
    /// Fails with a message that names the file when there is none, and with the reader's message
    /// when it is not readable as a state. A file that ends inside a string throws
    /// `std::length_error`.
    static Expected<std::shared_ptr<Cache>> get(const RootPath& root, const IoInterface& io);
    /// Writes a default state file, and tells `io` how that went, unless there is a file already.
    static void create(const RootPath& root, const IoInterface& io);

    Cache(const Cache&) = default;
    Cache(Cache&&) = default;
    Cache& operator=(const Cache&) = delete;
    Cache& operator=(Cache&&) = delete;
    /// Writes the state file when `write` was ever called, and tells the host. Never throws.
    ~Cache();

    /// The state as it is now, unsaved changes included.
    const State& read() const { return state_; }
    /// The state for changing. From now on it will be written, changed or not.
    State& write();
    /// The same as `Transaction(*this)`.
    [[nodiscard]] Transaction getTransaction();

private:
    Cache(const RootPath& root, const IoInterface& io);
    Cache(const RootPath& root, State state, const IoInterface& io);

    MovedFlag modified_;
    State state_;
    ut::FileName stateFile_;
    const IoInterface& io_;
    // The file lies here, whatever folder is the current one when it is written.
    OdString target_;
    // To be told when there is no memory for any other message.
    ErrorMessage unexpected_;
};

}  // namespace common
