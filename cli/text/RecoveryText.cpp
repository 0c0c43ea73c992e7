#include <cli/text/RecoveryText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <utility>

namespace qrv::cli {

namespace {

const wchar_t* outcomeOf(const InterruptedOperation& operation, Recover what) {
    if (what == Recover::look)
        return operation.isFinished ? L"to-finish" : L"to-take-back";
    if (what == Recover::forget)
        return L"forgotten";
    return operation.isFinished ? L"finished" : L"taken-back";
}

OdString patternOf(const InterruptedOperation& operation, Recover what) {
    if (what == Recover::look)
        return operation.isFinished ? tr(L"'%ls' is to be finished; files: %i\n")
                                    : tr(L"'%ls' is to be taken back; files: %i\n");
    if (what == Recover::forget)
        return tr(L"'%ls' is forgotten, and its files are left as they are: %i\n");
    return operation.isFinished ? tr(L"'%ls' is finished; files: %i\n")
                                : tr(L"'%ls' is taken back; files: %i\n");
}

}  // namespace

jsonlib::json::Value recoveryDocument(const std::optional<InterruptedOperation>& operation,
                                      Recover what) {
    jsonlib::json::Array files;
    jsonlib::json::Object object;
    object[L"interrupted"] =
        operation ? jsonlib::json::Value(operation->title.toWide()) : jsonlib::json::Value();
    object[L"outcome"] = operation ? outcomeOf(*operation, what) : L"nothing";
    if (operation) {
        for (const OdString& path : operation->files)
            files.emplace_back(path.toWide());
    }
    object[L"files"] = std::move(files);
    return object;
}

std::string recoveryText(const std::optional<InterruptedOperation>& operation, Recover what) {
    if (!operation)
        return trUtf8(L"Nothing was interrupted\n");
    OdString text = OdString::format(patternOf(*operation, what), printable(operation->title),
                                     operation->files.size());
    if (what == Recover::look) {
        for (const OdString& path : operation->files)
            text += L"  " + printable(path) + L"\n";
    }
    return text.toNarrow();
}

jsonlib::json::Value rebuiltDocument(const Rebuilt& rebuilt) {
    jsonlib::json::Array problems;
    for (const OdString& problem : rebuilt.problems)
        problems.emplace_back(problem.toWide());
    jsonlib::json::Object object;
    object[L"commits"] = rebuilt.commits;
    object[L"references"] = rebuilt.references;
    object[L"problems"] = std::move(problems);
    object[L"setAside"] = rebuilt.setAside.isEmpty()
                              ? jsonlib::json::Value()
                              : jsonlib::json::Value(rebuilt.setAside.toWide());
    return object;
}

std::string rebuiltText(const Rebuilt& rebuilt) {
    OdString text = OdString::format(tr(L"Commits made anew: %i\n"), rebuilt.commits);
    text += OdString::format(tr(L"Branches and tags made anew: %i\n"), rebuilt.references);
    if (!rebuilt.setAside.isEmpty())
        text += OdString::format(tr(L"The damaged history is kept as '%ls'\n"),
                                 printable(rebuilt.setAside));
    for (const OdString& problem : rebuilt.problems)
        text += L"  " + printable(problem) + L"\n";
    return text.toNarrow();
}

}  // namespace qrv::cli
