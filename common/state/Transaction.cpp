#include <common/state/Cache.h>
#include <common/state/Transaction.h>

#include <utility>

namespace common {

Transaction::Transaction(Cache& cache) : cache_(cache), snapshot_(cache.read()) {
}

Transaction::~Transaction() {
    // Asking for writing marks the cache: a rolled-back one rewrites its file, on purpose.
    if (!committed_)
        std::swap(cache_.write(), snapshot_);
}

}  // namespace common
