#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Suggestion.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>

#include <algorithm>
#include <string>

namespace qrv {

namespace {

constexpr std::size_t fewestDigitsOfHash = 4;

Expected<OdString> headCommit(History& history, const OdString& currentBranch) {
    if (const auto hash = history.reference(currentBranch, common::RefType::Branch))
        return *hash;
    return ErrorMessage{OdString::format(tr(L"There is no commit yet on the branch '%ls'"),
                                         printable(currentBranch))};
}

std::optional<OdString> referenced(History& history, const OdString& name) {
    if (auto hash = history.reference(name, common::RefType::Branch))
        return hash;
    return history.reference(name, common::RefType::Tag);
}

bool isNumber(const OdString& text) {
    const std::wstring& units = text.toWide();
    // Any longer one is too high.
    return !units.empty() && units.size() <= 12 &&
           std::all_of(units.begin(), units.end(),
                       [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; });
}

std::optional<OdString> numbered(History& history, const OdString& name) {
    const OdString digits = name[0] == L'#' ? name.mid(1) : name;
    if (!isNumber(digits))
        return std::nullopt;
    const std::optional<CommitEntry> commit = history.commitByNumber(std::stoll(digits.toWide()));
    if (!commit)
        return std::nullopt;
    return commit->hash;
}

bool isBeginOfHash(const OdString& digits) {
    const std::wstring& units = digits.toWide();
    return units.size() >= fewestDigitsOfHash && units.size() <= digestLength &&
           std::all_of(units.begin(), units.end(), isDigitOfDigest);
}

/// The beginnings of two different hashes, long enough to tell them apart.
std::pair<OdString, OdString> distinctBeginnings(const OdString& one, const OdString& other) {
    constexpr std::ptrdiff_t usualLength = 12;
    const std::wstring& units = one.toWide();
    const auto difference = std::mismatch(units.begin(), units.end(), other.toWide().begin()).first;
    const auto length = static_cast<int>(std::max(usualLength, difference - units.begin() + 1));
    return {one.left(length), other.left(length)};
}

ErrorMessage notFound(History& history, const OdString& name) {
    std::vector<OdString> names = {L"HEAD"};
    for (const common::Reference& reference : history.references())
        names.push_back(reference.name);
    const std::optional<OdString> suggestion = closest(name, names);
    if (!suggestion)
        return {OdString::format(tr(L"There is no commit, branch or tag '%ls'"), printable(name))};
    return {OdString::format(tr(L"There is no commit, branch or tag '%ls' (did you mean '%ls'?)"),
                             printable(name), *suggestion)};
}

}  // namespace

Expected<OdString> findCommit(History& history, const OdString& name,
                              const OdString& currentBranch) {
    if (name == L"HEAD")
        return headCommit(history, currentBranch);
    if (const auto hash = referenced(history, name))
        return *hash;
    if (const auto hash = numbered(history, name))
        return *hash;
    const OdString digits = OdString(name).makeLower();
    if (!isBeginOfHash(digits))
        return notFound(history, name);
    const std::vector<CommitEntry> commits = history.commitsByPrefix(digits, 2);
    if (commits.empty())
        return notFound(history, name);
    if (commits.size() == 1)
        return commits.front().hash;
    const auto [one, other] = distinctBeginnings(commits[0].hash, commits[1].hash);
    return ErrorMessage{
        OdString::format(tr(L"'%ls' could be the commits %ls and %ls"), name, one, other)};
}

}  // namespace qrv
