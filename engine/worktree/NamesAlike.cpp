#include <engine/paths/PathParts.h>
#include <engine/worktree/FoldedName.h>
#include <engine/worktree/NamesAlike.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace qrv {

namespace {

bool isAbove(const OdString& folder, const OdString& path) {
    return folder.isEmpty() || path.left(folder.getLength() + 1) == folder + L'/';
}

OdString joined(const OdString& folder, const OdString& name) {
    return folder.isEmpty() ? name : folder + L'/' + name;
}

std::vector<std::string> namesIn(const OdString& folder, const sys::Folder& root) {
    sys::Outcome<std::vector<std::string>> names =
        root.list(folder.isEmpty() ? "." : folder.toNarrow());
    return names ? std::move(*names) : std::vector<std::string>();
}

}  // namespace

bool NamesAlike::hasOther(const OdString& path) {
    // Thousands of new files may lie in one folder.
    const OdString folder = parentOf(path);
    if (fineFolder_ == folder)
        return isRepeated(path);
    std::erase_if(repeated_, [&path](const auto& names) { return !isAbove(names.first, path); });
    for (OdString part = path; !part.isEmpty(); part = parentOf(part)) {
        if (isRepeated(part))
            return true;
    }
    fineFolder_ = folder;
    return false;
}

bool NamesAlike::isRepeated(const OdString& path) {
    const Names& repeated = repeatedIn(parentOf(path));
    return !repeated.empty() && repeated.contains(folded(nameOf(path)));
}

const NamesAlike::Names& NamesAlike::repeatedIn(const OdString& folder) {
    const auto [repeated, isNew] = repeated_.try_emplace(folder);
    if (!isNew)
        return repeated->second;
    std::vector<std::u16string> names;
    for (const std::string& name : namesIn(folder, root_))
        names.push_back(folded(OdString::fromNarrow(name)));
    std::sort(names.begin(), names.end());
    for (auto name = names.begin(); (name = std::adjacent_find(name, names.end())) != names.end();
         ++name)
        repeated->second.insert(*name);
    return repeated->second;
}

std::vector<OdString> FilesAlike::under(const OdString& path) {
    std::vector<OdString> alike = {OdString()};
    for (int begin = 0; begin < path.getLength();) {
        const int slash = path.find(L'/', begin);
        const int end = slash < 0 ? path.getLength() : slash;
        const std::u16string name = folded(path.mid(begin, end - begin));
        std::vector<OdString> next;
        for (const OdString& folder : alike) {
            const auto [first, last] = namesIn(folder).equal_range(name);
            std::transform(first, last, std::back_inserter(next),
                           [&folder](const auto& other) { return joined(folder, other.second); });
        }
        alike = std::move(next);
        begin = end + 1;
    }
    std::erase_if(alike, [this](const OdString& each) {
        const sys::Outcome<sys::FileStatus> status = root_.status(each.toNarrow());
        return !status || status->kind == sys::FileKind::folder;
    });
    std::sort(alike.begin(), alike.end());
    return alike;
}

const FilesAlike::Names& FilesAlike::namesIn(const OdString& folder) {
    const auto [names, isNew] = names_.try_emplace(folder);
    if (!isNew)
        return names->second;
    for (const std::string& name : qrv::namesIn(folder, root_)) {
        const OdString text = OdString::fromNarrow(name);
        names->second.emplace(folded(text), text);
    }
    return names->second;
}

}  // namespace qrv
