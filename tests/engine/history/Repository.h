#pragma once

#include <common/repository/RootPath.h>
#include <engine/database/Database.h>
#include <engine/history/History.h>
#include <tests/engine/tree/Trees.h>
#include <tests/support/TemporaryFolder.h>

#include <string>
#include <utility>
#include <vector>

namespace qrv_test {

inline qrv::NewCommit newCommit(std::vector<OdString> parents, const char* message,
                                std::vector<qrv::FileDelta> deltas = {}) {
    return {std::move(parents), L"Ada", OdString(message), 1709647629, std::move(deltas)};
}

/// A repository with a history.
struct Repository {
    TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();
    qrv::History history = qrv::History::open(root, qrv::Database::Access::create);

    Repository() {
        // These tests pull no plug, and there are many files.
        history.database().execute("PRAGMA synchronous=OFF");
    }

    /// Adds a commit and gives its hash.
    OdString add(std::vector<OdString> parents, const char* message,
                 std::vector<qrv::FileDelta> deltas = {}) {
        return history.add(newCommit(std::move(parents), message, std::move(deltas))).hash;
    }
    /// Changes the file as somebody could who knows SQLite, past all that guards it.
    void tamper(const char* sql) const {
        qrv::Database database(root.dbPath(), qrv::Database::Access::readWrite);
        database.execute(
            "PRAGMA synchronous=OFF; PRAGMA foreign_keys=OFF; PRAGMA ignore_check_constraints=ON");
        database.execute(sql);
    }
    /// What the history says when it cannot do it, with "DB" for the path of its file; "no
    /// complaint" when it can.
    template <class Action>
    std::string complaint(const Action& action) const {
        try {
            action();
        } catch (const qrv::DatabaseError& error) {
            return withoutPath(error.description());
        }
        return "no complaint";
    }
    std::string withoutPath(const OdString& message) const {
        std::string text = message.toNarrow();
        const std::string file = root.dbPath().toNarrow();
        if (const auto at = text.find(file); at != std::string::npos)
            text.replace(at, file.size(), "DB");
        return text;
    }
};

}  // namespace qrv_test
