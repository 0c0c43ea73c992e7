#pragma once

#include <common/base/Expected.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qrv {

/// Long work that was begun; it ends with this.
class QRV_ENGINE_EXPORT Work {
public:
    Work() = default;
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    virtual ~Work() = default;

    /// One more file of this size is done.
    virtual void add(std::int64_t sizeBytes) = 0;
};

/// Whoever has the engine do something: is told what is no result of it, and answers what only the
/// program around the engine can know. One that is given to an object must outlive it. Nothing of
/// it is called from another thread than that of the call which it was given to.
class QRV_ENGINE_EXPORT Caller {
public:
    Caller() = default;
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;
    virtual ~Caller() = default;

    /// Something that a person should read: one or more lines, in the person's language.
    virtual void note(const OdString& text) = 0;
    /// Work of which nobody knows how long it takes. `title` says what is done ("Storing"); of
    /// `total` files, or of nobody knows how many (0). Never null.
    virtual std::unique_ptr<Work> beginWork(const OdString& title, std::size_t total) = 0;

    /// The word by which a person asked for what is done now, such as "commit", for the records
    /// that name it.
    virtual std::string action() const = 0;
    /// Whether the user whose number this is counts as the person, beside the one whose rights the
    /// process has.
    virtual bool isPerson(std::uint32_t user) const = 0;
    /// The repositories of other people that the person trusts: the paths of their folders,
    /// absolute and without links. Fails with a message when that cannot be told.
    virtual Expected<std::vector<OdString>> trustedFolders() const = 0;
    /// Whether what is made in a shared repository follows its folder (see SharedMode.h).
    virtual bool followsSharedFolders() const = 0;
    /// As long as what this gives lives, a wish to end the process waits for a moment at which
    /// nothing is left behind (see sys/Interruption.h). A guest in the process of another program,
    /// whose signals are not its own, gives nothing.
    virtual std::shared_ptr<void> deferInterruption() { return nullptr; }
};

}  // namespace qrv
