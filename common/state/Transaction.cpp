#include <common/state/Cache.h>
#include <common/state/Transaction.h>

#include <type_traits>
#include <utility>

namespace common {

Transaction::Transaction(Cache& cache) : cache_(cache), snapshot_(cache.read()) {
}

// The state is put back in a destructor, which may need no memory for it.
static_assert(std::is_nothrow_swappable_v<State>);

Transaction::~Transaction() {
    // Asking for writing marks the cache: a rolled-back one rewrites its file, on purpose.
    if (!committed_)
        std::swap(cache_.write(), snapshot_);
}

}  // namespace common
