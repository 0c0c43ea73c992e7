#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/Plan.h>
#include <engine/history/ReferenceName.h>
#include <engine/history/RowsInternal.h>

#include <utility>

namespace qrv {

namespace {

std::vector<PlannedFile> plannedFiles(Database& database) {
    Statement query =
        database.prepare("SELECT path, before, after, size FROM plan_files ORDER BY position");
    const CheckedRow row(database, query);
    std::vector<PlannedFile> files;
    while (query.step())
        files.push_back({row.path(0), row.urlOrEmpty(1), row.urlOrEmpty(2), row.sizeBytes(3)});
    return files;
}

void requireStorable(const Database& database, const PlannedFile& file) {
    for (const OdString& url : {file.before, file.after})
        requireStorable(database, FileDelta{file.path, url, std::nullopt, file.sizeBytes});
}

Plan::Recovery recoveryIn(const Database& database, const Statement& row, int column) {
    switch (row.integer(column)) {
        case 0:
            return Plan::Recovery::finish;
        case 1:
            return Plan::Recovery::takeBack;
        default:
            failDamaged(database,
                        OdString::format(tr(L"%i is no kind of recovery"), row.integer(column)));
    }
}

/// Why the plan cannot lead to its branch and commit, or nothing. Both may be empty.
std::optional<OdString> refusalOf(const Plan& plan) {
    const Expected<OdString> branch = checkedReferenceName(plan.branch);
    if (!plan.branch.isEmpty() && !branch)
        return branch.error().message;
    if (!plan.commit.isEmpty() && !isDigest(plan.commit))
        return OdString::format(tr(L"'%ls' is no hash"), printable(plan.commit));
    return std::nullopt;
}

}  // namespace

Plan reversed(Plan plan) {
    for (PlannedFile& step : plan.files)
        std::swap(step.before, step.after);
    return plan;
}

std::optional<Plan> notedPlan(History& history) {
    Database& database = history.database();
    Statement query = database.prepare("SELECT title, recovery, branch, commit_hash FROM plan");
    if (!query.step())
        return std::nullopt;
    Plan plan;
    plan.title = query.text(0);
    plan.recovery = recoveryIn(database, query, 1);
    plan.branch = query.text(2);
    plan.commit = query.text(3);
    if (const std::optional<OdString> refusal = refusalOf(plan))
        failDamaged(database, *refusal);
    plan.files = plannedFiles(database);
    return plan;
}

void notePlan(History& history, const Plan& plan) {
    Database& database = history.database();
    if (const std::optional<OdString> refusal = refusalOf(plan))
        failToKeep(database, *refusal);
    for (const PlannedFile& file : plan.files)
        requireStorable(database, file);
    DatabaseTransaction transaction(database);
    forgetPlan(history);
    database.prepare("INSERT INTO plan VALUES (1, ?, ?, ?, ?)")
        .run(plan.title, static_cast<int>(plan.recovery), plan.branch, plan.commit);
    Statement insertion = database.prepare("INSERT INTO plan_files VALUES (?, ?, ?, ?, ?)");
    int position = 0;
    for (const PlannedFile& file : plan.files)
        insertion.run(position++, file.path.text(), file.before, file.after, file.sizeBytes);
    transaction.commit();
}

void forgetPlan(History& history) {
    DatabaseTransaction transaction(history.database());
    history.database().execute("DELETE FROM plan_files; DELETE FROM plan");
    transaction.commit();
}

}  // namespace qrv
