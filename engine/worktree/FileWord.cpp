#include <engine/base/Printable.h>
#include <engine/base/Suggestion.h>
#include <engine/base/Translation.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/PathGlob.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

namespace qrv {

namespace {

/// More paths than that help nobody to choose.
constexpr std::size_t mostNamed = 5;

using Paths = std::vector<OdString>;

template <class Condition>
Paths those(const Paths& paths, Condition condition) {
    Paths chosen;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(chosen), condition);
    return chosen;
}

/// The folders before the first name with a star or a question mark are taken as they are, like
/// every other path. Nothing when they lie outside the repository.
std::optional<PathGlob> globOf(const common::RootPath& root, const std::string& word) {
    const std::size_t slash = word.rfind('/', word.find_first_of("*?"));
    const bool hasFolder = slash != std::string::npos;
    const Expected<OdString> folder =
        pathInRepository(root, hasFolder ? word.substr(0, slash + 1) : ".");
    if (!folder)
        return std::nullopt;
    std::string glob = hasFolder ? word.substr(slash + 1) : word;
    // A separator at the end says that a folder is meant, and changes nothing else.
    while (glob.ends_with('/'))
        glob.pop_back();
    if (word.find('/') == std::string::npos)
        glob.insert(0, "**/");
    return PathGlob(*folder, OdString::fromNarrow(glob));
}

bool endsIn(const OdString& text, const OdString& end) {
    return text.getLength() >= end.getLength() && text.right(end.getLength()) == end;
}

/// The place of the last "." when only letters follow it.
int placeOfExtension(const OdString& path) {
    const int point = path.reverseFind(L'.');
    for (int index = point + 1; index < path.getLength(); ++index) {
        const wchar_t unit = path[index];
        if ((unit < L'a' || unit > L'z') && (unit < L'A' || unit > L'Z'))
            return -1;
    }
    return point + 1 < path.getLength() ? point : -1;
}

bool isEndOf(const OdString& word, const OdString& path) {
    if (endsIn(path, word))
        return true;
    if (ut::FileName(word).hasExt())
        return false;
    OdString shorter = path;
    for (int point = placeOfExtension(shorter); point >= 0; point = placeOfExtension(shorter)) {
        shorter = shorter.left(point);
        if (endsIn(shorter, word))
            return true;
    }
    return false;
}

OdString bareName(const OdString& path) {
    return path.mid(path.reverseFind(L'/') + 1);
}

bool holdsWord(const OdString& path, const OdString& word) {
    OdString name = bareName(path);
    OdString sought = word;
    name.makeLower();
    sought.makeLower();
    return name.find(sought) >= 0;
}

ErrorMessage ambiguous(const OdString& word, const Paths& found) {
    OdString text =
        OdString::format(tr(L"Several files end in '%ls': %i"), printable(word), found.size());
    for (std::size_t place = 0; place < std::min(found.size(), mostNamed); ++place)
        text += L"\n  " + printable(found[place]);
    return {text};
}

}  // namespace

Expected<Paths> filesOfWord(const common::RootPath& root, const std::string& word,
                            const Paths& paths) {
    if (const Expected<OdString> path = pathInRepository(root, word)) {
        Paths named = those(paths, [&](const OdString& each) { return isChosen(each, {*path}); });
        if (!named.empty())
            return named;
    }
    const OdString text = OdString::fromNarrow(word);
    if (PathGlob::isGlob(text)) {
        const std::optional<PathGlob> glob = globOf(root, word);
        return glob ? those(paths, [&](const OdString& each) { return glob->matches(each); })
                    : Paths();
    }
    if (text.isEmpty())
        return Paths();
    Paths found = those(paths, [&text](const OdString& each) { return isEndOf(text, each); });
    if (found.size() > 1)
        return ambiguous(text, found);
    return found;
}

Paths nearPaths(const OdString& word, const Paths& paths) {
    if (word.isEmpty())
        return {};
    Paths near = those(paths, [&word](const OdString& each) { return holdsWord(each, word); });
    if (near.empty()) {
        Paths names;
        std::transform(paths.begin(), paths.end(), std::back_inserter(names), bareName);
        if (const std::optional<OdString> name = closest(bareName(word), names))
            near = those(paths, [&name](const OdString& each) { return bareName(each) == *name; });
    }
    near.resize(std::min(near.size(), mostNamed));
    return near;
}

}  // namespace qrv
