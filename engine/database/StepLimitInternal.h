#pragma once

#include <sys/Folder.h>

#include <cstdint>
#include <string>

struct sqlite3;

namespace qrv {

/// Ends a statement that takes more steps of SQLite than any can need in a file of that size. A
/// small file can be made in which a walk over a table never comes to its end: the same page stands
/// below many others, on each level again.
///
/// Steps are counted and not seconds, so that a slow disk and a busy machine interrupt nothing.
class StepLimit {
public:
    /// Of the file of that name. In the beginning it is as strict as reading the schema allows.
    StepLimit(const sys::Folder& folder, const std::string& name) : folder_(folder), name_(name) {}

    /// From here on the connection asks this, which must outlive it.
    void watch(sqlite3* connection);
    /// The schema was read.
    void allowWork() { isOpening_ = false; }

    /// What the connection does in this scope belongs to the work that `rounds` counts. A limit of
    /// null is none.
    class Scope {
    public:
        Scope(StepLimit* limit, std::int64_t& rounds) : limit_(limit) {
            if (limit_ != nullptr)
                limit_->rounds_ = &rounds;
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() {
            if (limit_ != nullptr)
                limit_->rounds_ = nullptr;
        }

    private:
        StepLimit* limit_;
    };

private:
    static int onProgress(void* self);
    bool isExceeded() const;

    sys::Folder folder_;
    std::string name_;
    bool isOpening_ = true;
    std::int64_t* rounds_ = nullptr;
};

}  // namespace qrv
