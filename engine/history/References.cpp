#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/ReferenceName.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SumsInternal.h>

namespace qrv {

namespace {

const wchar_t* wordOf(common::RefType type) {
    return type == common::RefType::Branch ? L"branch" : L"tag";
}

common::RefType typeOf(const Database& database, const OdString& word) {
    for (const common::RefType type : {common::RefType::Branch, common::RefType::Tag}) {
        if (word == wordOf(type))
            return type;
    }
    failDamaged(database, OdString::format(tr(L"'%ls' is no kind of reference"), printable(word)));
}

/// From a row of type, name and the hash of the commit that has the number, if one has.
common::Reference toReference(const Database& database, const Statement& row) {
    const Expected<OdString> name = checkedReferenceName(row.text(1));
    if (!name)
        failDamaged(database, name.error().message);
    if (row.isNull(2))
        failDamaged(database, OdString::format(tr(L"the reference '%ls' names no commit"), *name));
    common::Reference reference;
    reference.type = typeOf(database, row.text(0));
    reference.name = *name;
    reference.commitHash = CheckedRow(database, row).hash(2);
    return reference;
}

}  // namespace

std::vector<common::Reference> History::references() {
    Statement query = database_->prepare(
        "SELECT type, name, hash FROM refs LEFT JOIN commits USING (number) ORDER BY type, name");
    std::vector<common::Reference> references;
    while (query.step())
        references.push_back(toReference(*database_, query));
    checkSum(*database_);
    return references;
}

std::optional<OdString> History::reference(const OdString& name, common::RefType type) {
    Statement query = database_->prepare(
        "SELECT type, name, hash FROM refs LEFT JOIN commits USING (number) "
        "WHERE type = ? AND name = ?");
    query.bind(OdString(wordOf(type)), name);
    std::optional<OdString> hash;
    if (query.step())
        hash = toReference(*database_, query).commitHash;
    checkSum(*database_);
    return hash;
}

void History::setReference(const OdString& name, common::RefType type, const OdString& hash) {
    const Expected<OdString> checked = checkedReferenceName(name);
    if (!checked)
        failToKeep(*database_, checked.error().message);
    DatabaseTransaction transaction(*database_);
    const std::int64_t number = numberOf(*database_, hash);
    if (reference(*checked, type) == hash)
        return;
    database_->prepare("INSERT OR REPLACE INTO refs VALUES (?, ?, ?)")
        .run(OdString(wordOf(type)), *checked, number);
    countReferenceChange(*database_);
    renewSum(*database_);
    transaction.commit();
}

void History::removeReference(const OdString& name, common::RefType type) {
    DatabaseTransaction transaction(*database_);
    if (!reference(name, type))
        return;
    database_->prepare("DELETE FROM refs WHERE type = ? AND name = ?")
        .run(OdString(wordOf(type)), name);
    countReferenceChange(*database_);
    renewSum(*database_);
    transaction.commit();
}

}  // namespace qrv
