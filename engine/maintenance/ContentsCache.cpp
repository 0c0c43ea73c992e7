#include <engine/maintenance/ContentsCache.h>

#include <utility>

namespace qrv {

std::shared_ptr<const Bytes> ContentsCache::find(std::uint32_t number) {
    const auto place = places_.find(number);
    if (place == places_.end())
        return nullptr;
    // Not by splicing, which ends the process when two lists do not fit each other.
    kept_.push_front(std::move(*place->second));
    kept_.erase(place->second);
    place->second = kept_.begin();
    return kept_.front().contents;
}

void ContentsCache::add(std::uint32_t number, std::shared_ptr<const Bytes> contents) {
    if (contents->size() > mostBytes_ || places_.contains(number))
        return;
    bytes_ += contents->size();
    kept_.push_front({.number = number, .contents = std::move(contents)});
    places_.emplace(number, kept_.begin());
    while (bytes_ > mostBytes_) {
        bytes_ -= kept_.back().contents->size();
        places_.erase(kept_.back().number);
        kept_.pop_back();
    }
}

}  // namespace qrv
