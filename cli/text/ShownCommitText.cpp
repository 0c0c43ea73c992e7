#include <cli/text/CommitText.h>
#include <cli/text/DifferenceText.h>
#include <cli/text/ReferenceList.h>
#include <cli/text/ShownCommitText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>

namespace qrv::cli {

namespace {

OdString indented(const OdString& message) {
    OdString text;
    for (int begin = 0; begin <= message.getLength();) {
        const int feed = message.find(L'\n', begin);
        const int end = feed < 0 ? message.getLength() : feed;
        const OdString line = printable(message.mid(begin, end - begin));
        text += line.isEmpty() ? OdString(L"\n") : L"    " + line + L"\n";
        begin = end + 1;
    }
    return text;
}

OdString headingOf(const CommitEntry& commit, const ReferenceList& references) {
    OdString text =
        OdString::format(tr(L"Commit %i%ls\n"), commit.number, references.textAt(commit.hash));
    text += OdString::format(tr(L"Hash: %ls\n"), commit.hash);
    for (const OdString& parent : commit.parents)
        text += OdString::format(tr(L"Builds on: %ls\n"), parent);
    text += OdString::format(tr(L"Author: %ls\n"), printable(commit.author));
    text += OdString::format(tr(L"Time: %ls\n"), timeText(commit.timeSeconds));
    return text + L"\n" + indented(commit.message);
}

}  // namespace

jsonlib::json::Object shownCommitDocument(const ShownCommit& shown) {
    jsonlib::json::Object object = toJson(shown.commit);
    object[L"references"] = ReferenceList(shown.references).documentAt(shown.commit.hash);
    object[L"changes"] = toJson(shown.changes);
    return object;
}

std::string shownCommitText(const ShownCommit& shown) {
    OdString text = headingOf(shown.commit, ReferenceList(shown.references));
    if (!shown.changes.empty())
        text += L"\n";
    for (const Difference& change : shown.changes)
        text += differenceText(change) + sizeText(change) + L"\n";
    return text.toNarrow();
}

}  // namespace qrv::cli
