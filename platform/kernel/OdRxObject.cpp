#include <platform/kernel/OdRxObject.h>

#include <utility>

OdRxObject::~OdRxObject() = default;

void OdRxObject::addRef() const {
    references_.fetch_add(1, std::memory_order_relaxed);
}

void OdRxObject::release() const {
    // What other threads did with the object must have happened before the last one destroys it.
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

long OdRxObject::numRefs() const {
    return references_.load(std::memory_order_relaxed);
}

OdRxObjectPtr::OdRxObjectPtr(const OdRxObject* object) : object_(object) {
    if (object_ != nullptr)
        object_->addRef();
}

OdRxObjectPtr::OdRxObjectPtr(const OdRxObjectPtr& other) : OdRxObjectPtr(other.object_) {
}

OdRxObjectPtr::OdRxObjectPtr(OdRxObjectPtr&& other) noexcept
    : object_(std::exchange(other.object_, nullptr)) {
}

OdRxObjectPtr& OdRxObjectPtr::operator=(OdRxObjectPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
}

OdRxObjectPtr::~OdRxObjectPtr() {
    if (object_ != nullptr)
        object_->release();
}
