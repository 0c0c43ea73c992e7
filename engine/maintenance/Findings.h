#pragma once

#include <engine/maintenance/Verification.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <utility>

namespace qrv {

/// Gathers what the parts of a check find.
class Findings {
public:
    /// Does one step of the check; a `DatabaseError` that ends it is a problem.
    void attempt(const std::function<void()>& step);
    /// Damage at one place is met by several steps, and told once.
    void addProblem(const OdString& problem);
    void addNote(const OdString& note) { found_.notes.push_back(note); }
    /// How much was looked at.
    Verification& counts() { return found_; }

    Verification take() { return std::move(found_); }

private:
    Verification found_;
};

}  // namespace qrv
