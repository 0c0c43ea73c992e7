#include <common/base/MessageInternal.h>
#include <common/repository/DeferredWriteInternal.h>
#include <common/state/Cache.h>
#include <common/state/StateFile.h>
#include <common/state/StateWriterInternal.h>
#include <common/state/Transaction.h>
#include <platform/kernel/OdError.h>

#include <utility>

namespace common {

namespace {

bool exists(const ut::FileName& file) {
    constexpr int anyKind = 0x1FFF;
    return file.exists(anyKind);
}

}  // namespace

Expected<std::shared_ptr<Cache>> Cache::get(const RootPath& root, const IoInterface& io) try {
    const ut::FileName file(root.statePath());
    if (!exists(file))
        return translatedError(L"No state file found at %ls", file.getFullPath());
    Expected<State> state = deserialize(file.getFullPath());
    if (!state)
        return std::move(state).error();
    return std::shared_ptr<Cache>(new Cache(root, std::move(*state), io));
} catch (const OdError& error) {
    return ErrorMessage{error.description()};
}

void Cache::create(const RootPath& root, const IoInterface& io) {
    if (exists(ut::FileName(root.statePath())))
        return;
    // It is modified from the start, so its end, right here, writes the file.
    const Cache cache(root, io);
}

Cache::Cache(const RootPath& root, const IoInterface& io)
    : modified_(true),
      stateFile_(root.statePath()),
      io_(io),
      target_(absolutePathOf(stateFile_)),
      unexpected_(unexpectedStateError()) {
}

Cache::Cache(const RootPath& root, State state, const IoInterface& io)
    : modified_(false),
      state_(std::move(state)),
      stateFile_(root.statePath()),
      io_(io),
      target_(absolutePathOf(stateFile_)),
      unexpected_(unexpectedStateError()) {
}

Cache::~Cache() {
    if (!modified_)
        return;
    writeAndReport([this] { return replaceState(state_, target_, stateFile_.getFullPath()); },
                   std::move(unexpected_), io_);
}

State& Cache::write() {
    modified_ = true;
    return state_;
}

Transaction Cache::getTransaction() {
    return Transaction(*this);
}

}  // namespace common
