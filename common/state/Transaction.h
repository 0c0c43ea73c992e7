#pragma once

#include <common/base/Export.h>
#include <common/state/State.h>

namespace common {

class Cache;

/// A guard of changes to a cache's state: unless it is committed, its end puts back the state that
/// the cache had when it was made. It never writes a file itself: the cache does when it ends,
/// after a roll-back too.
///
///     Transaction transaction(cache);     // remembers the state
///     cache.write().head.reference = L"main";
///     transaction.commit();               // without this, the change is undone here
///
/// The cache must outlive it. A copy is a guard of its own with the same remembered state.
class QRV_COMMON_EXPORT Transaction {
public:
    /// Remembers the cache's present state.
    [[nodiscard]] Transaction(Cache& cache);
    Transaction(const Transaction&) = default;
    Transaction& operator=(const Transaction&) = delete;
    /// Puts the remembered state back unless `commit` was called.
    ~Transaction();

    /// Keeps the changes, also those made later. Marks nothing: `Cache::write` did.
    void commit() { committed_ = true; }

private:
    Cache& cache_;
    State snapshot_;
    bool committed_ = false;
};

}  // namespace common
