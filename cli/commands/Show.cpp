#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/text/DifferenceText.h>
#include <cli/text/ReferenceList.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>
#include <engine/operations/Show.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string object = "HEAD";
    bool asJson = false;
};

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

std::string plainText(const ShownCommit& shown) {
    OdString text = headingOf(shown.commit, ReferenceList(shown.references));
    if (!shown.changes.empty())
        text += L"\n";
    for (const Difference& change : shown.changes)
        text += differenceText(change) + sizeText(change) + L"\n";
    return text.toNarrow();
}

jsonlib::json::Object documentOf(const ShownCommit& shown) {
    jsonlib::json::Object object = toJson(shown.commit);
    object[L"references"] = ReferenceList(shown.references).documentAt(shown.commit.hash);
    object[L"changes"] = toJson(shown.changes);
    return object;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    ContentsSink contents;
    if (!arguments.asJson)
        contents = [&output](std::string_view part) { output.write(part); };
    const Expected<std::optional<ShownCommit>> shown =
        show(".", arguments.object, contents, person());
    if (!shown)
        return shown.error();
    if (*shown && arguments.asJson)
        writeJson(documentOf(**shown), output);
    else if (*shown)
        output.write(plainText(**shown));
    else if (arguments.asJson)
        return ErrorMessage{tr(L"--json is for a commit; a file is printed as it is")};
    return {};
}

}  // namespace

Action declareShow(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("COMMIT", arguments->object,
                     trUtf8(L"The commit to show (default: the current branch's); with \":\" and "
                            L"a file's path behind it, the file's contents are printed"));
    parser.addFlag("--json", arguments->asJson,
                   trUtf8(L"Print an object with \"number\", \"hash\", \"parents\", \"author\", "
                          L"\"message\", \"time\", \"references\" and \"changes\", the latter as "
                          L"qrv diff --json prints them"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
