#pragma once

#include <engine/base/Bytes.h>

#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>

namespace qrv {

/// Keeps the contents that were used last, up to some length in all.
class ContentsCache {
public:
    explicit ContentsCache(std::int64_t mostBytes) : mostBytes_(mostBytes) {}

    /// Null when they are not there any more.
    std::shared_ptr<const Bytes> find(std::uint32_t number);
    /// Those that are longer than all may be together are not kept.
    void add(std::uint32_t number, std::shared_ptr<const Bytes> contents);

private:
    struct Kept {
        std::uint32_t number;
        std::shared_ptr<const Bytes> contents;
    };

    std::int64_t mostBytes_;
    std::int64_t bytes_ = 0;
    // The one that was used last comes first.
    std::list<Kept> kept_;
    std::unordered_map<std::uint32_t, std::list<Kept>::iterator> places_;
};

}  // namespace qrv
