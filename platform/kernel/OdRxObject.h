#pragma once

#include <platform/kernel/Export.h>

#include <atomic>

/// The base of the kernel's counted objects. An object starts with one reference, which belongs to
/// whoever made it; the last `release` destroys it. Counts are atomic, the objects are not.
class QRV_PLATFORM_EXPORT OdRxObject {
public:
    OdRxObject() = default;
    OdRxObject(const OdRxObject&) = delete;
    OdRxObject& operator=(const OdRxObject&) = delete;

    /// Takes one more reference.
    void addRef() const;
    /// Gives one back; the last one destroys the object.
    void release() const;
    /// How many there are now. Other threads may change it at any time.
    long numRefs() const;

protected:
    virtual ~OdRxObject();

private:
    mutable std::atomic<long> references_ = 1;
};

/// Shares an `OdRxObject`: a copy takes a reference, destruction gives it back. May be empty.
class QRV_PLATFORM_EXPORT OdRxObjectPtr {
public:
    OdRxObjectPtr() = default;
    /// Takes a further reference to `object`, which may be null.
    OdRxObjectPtr(const OdRxObject* object);
    OdRxObjectPtr(const OdRxObjectPtr& other);
    OdRxObjectPtr(OdRxObjectPtr&& other) noexcept;
    /// Gives back the old object's reference and shares the other one.
    OdRxObjectPtr& operator=(OdRxObjectPtr other) noexcept;
    ~OdRxObjectPtr();

    /// The object, or null; valid as long as somebody holds a reference.
    const OdRxObject* get() const { return object_; }
    /// Whether it is empty.
    bool isNull() const { return object_ == nullptr; }
    friend bool operator==(const OdRxObjectPtr&, const OdRxObjectPtr&) = default;

private:
    const OdRxObject* object_ = nullptr;
};
