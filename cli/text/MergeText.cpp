#include <cli/text/CommitText.h>
#include <cli/text/ConflictText.h>
#include <cli/text/MergeText.h>
#include <engine/base/Translation.h>

#include <cstddef>
#include <utility>

namespace qrv::cli {

namespace {

const wchar_t* codeOf(Merged::Kind kind) {
    switch (kind) {
        case Merged::Kind::upToDate:
            return L"upToDate";
        case Merged::Kind::fastForward:
            return L"forward";
        case Merged::Kind::committed:
            return L"committed";
        case Merged::Kind::conflicts:
            break;
    }
    return L"conflicts";
}

}  // namespace

jsonlib::json::Value mergeDocument(const Merged& merged) {
    jsonlib::json::Array files;
    for (const OdString& path : merged.files)
        files.emplace_back(path.toWide());
    jsonlib::json::Object object;
    object[L"result"] = codeOf(merged.kind);
    object[L"files"] = std::move(files);
    object[L"conflicts"] = toJson(merged.conflicts);
    if (merged.commit)
        object[L"commit"] = toJson(*merged.commit);
    return object;
}

OdString mergeText(const Merged& merged, const OdString& name) {
    const std::size_t count = merged.files.size();
    switch (merged.kind) {
        case Merged::Kind::upToDate:
            return OdString::format(tr(L"'%ls' is merged already\n"), name);
        case Merged::Kind::fastForward:
            return OdString::format(tr(L"Went forward to '%ls'; files changed: %i\n"), name, count);
        case Merged::Kind::committed:
            return OdString::format(tr(L"Merged '%ls' as commit %i; files changed: %i\n"), name,
                                    merged.commit->number, count);
        case Merged::Kind::conflicts:
            break;
    }
    return OdString::format(tr(L"Merging '%ls'; files changed: %i\n"), name, count);
}

}  // namespace qrv::cli
