#include <common/worktree/CollectFiles.h>
#include <common/worktree/NameRulesInternal.h>
#include <common/worktree/RepoIgnore.h>
#include <common/worktree/VisitRepoFiles.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <string>
#include <utility>

namespace common {

namespace {

constexpr const wchar_t* metadataFolder = L".qrv";

/// `prefix` and `name` in one allocation.
OdString joined(const OdString& prefix, const OdString& name) {
    std::wstring text;
    text.reserve(static_cast<std::size_t>(prefix.getLength()) +
                 static_cast<std::size_t>(name.getLength()));
    text.append(prefix.c_str(), static_cast<std::size_t>(prefix.getLength()));
    text.append(name.c_str(), static_cast<std::size_t>(name.getLength()));
    return OdString(std::move(text));
}

using TakePath = std::function<void(OdString)>;
/// Whether a file or folder of that bare name is left out.
using ExcludesName = std::function<bool(const OdString&)>;

/// Walks folders without recursion, however deep they are, and reads each of them once.
class Walk {
public:
    /// The last three functions take the paths of files, of folders and of folders that cannot be
    /// listed; all must live as long.
    Walk(std::uint32_t listFlags, const ExcludesName& isExcluded, const TakePath& onFile,
         const TakePath& onFolder, const TakePath& onUnread)
        : listFlags_(listFlags),
          isExcluded_(isExcluded),
          onFile_(onFile),
          onFolder_(onFolder),
          onUnread_(onUnread) {}

    /// Lists what is below `folder`, which is reported as `reported`; reported paths begin with
    /// `prefix`.
    void run(const OdString& folder, const OdString& reported, const OdString& prefix) {
        visit(folder, reported, prefix);
        while (!pending_.empty()) {
            const PendingFolder next = std::move(pending_.back());
            pending_.pop_back();
            onFolder_(next.reported);
            visit(next.path, next.reported, next.reported + separator_);
        }
    }

private:
    struct PendingFolder {
        OdString path;
        OdString reported;
    };

    void visit(const OdString& folder, const OdString& reported, const OdString& prefix) {
        const ut::Dir dir(folder);
        if (!dir.isOpened()) {
            onUnread_(reported);
            return;
        }
        addFiles(dir, prefix);
        addFolders(dir, prefix);
    }

    void addFiles(const ut::Dir& dir, const OdString& prefix) {
        for (const OdString& name : dir.list({}, listFlags_ | ut::Dir::kFiles)) {
            if (!name.isEmpty() && !isExcluded_(name))
                onFile_(joined(prefix, name));
        }
    }

    /// The last folder of the listing goes first onto the stack, so that the first is walked next.
    void addFolders(const ut::Dir& dir, const OdString& prefix) {
        std::vector<OdString> names = dir.list({}, listFlags_ | ut::Dir::kFolders);
        std::reverse(names.begin(), names.end());
        const OdString folder = dir.getName() + separator_;
        for (const OdString& name : names) {
            // A host's listing may hold the folder itself and the one above it.
            if (name.isEmpty() || name == L"." || name == L".." || isExcluded_(name))
                continue;
            pending_.push_back({joined(folder, name), joined(prefix, name)});
        }
    }

    const std::uint32_t listFlags_;
    const ExcludesName& isExcluded_;
    const TakePath& onFile_;
    const TakePath& onFolder_;
    const TakePath& onUnread_;
    const wchar_t separator_ = ut::FileName::getPathSeparator();
    std::vector<PendingFolder> pending_;
};

void passOver(const OdString& /*path*/) {
}

}  // namespace

CollectOptions::CollectOptions(bool isRelative, bool withDirectories, bool extendedListing,
                               const std::vector<std::regex>& excludedNames)
    : relative(isRelative),
      collectDirectories(withDirectories),
      listFlags(extendedListing ? ut::Dir::kExtended : 0U),
      excludes(excludedNames) {
}

DirContents collectDirContents(const OdString& folder, const CollectOptions& options) {
    const NameRules rules(options.excludes);
    const ExcludesName isExcluded = [&rules](const OdString& name) { return rules.exclude(name); };
    DirContents contents;
    const TakePath addFile = [&contents](OdString path) {
        contents.files.push_back(std::move(path));
    };
    const TakePath addFolder = [&](OdString path) {
        if (options.collectDirectories)
            contents.directories.push_back(std::move(path));
    };
    const TakePath passUnread = passOver;
    Walk walk(options.listFlags, isExcluded, addFile, addFolder, passUnread);
    walk.run(folder, folder,
             options.relative ? OdString() : folder + ut::FileName::getPathSeparator());
    return contents;
}

Expected<std::vector<File>> collectRepoFiles(std::function<void(const OdString&)> onError,
                                             const RootPath& root) {
    std::vector<File> files;
    const TakePath addFile = [&files](OdString path) {
        files.emplace_back().path = std::move(path);
    };
    if (Expected<void> visited = visitRepoFiles(std::move(onError), root, addFile, passOver);
        !visited)
        return std::move(visited).error();
    return files;
}

Expected<void> visitRepoFiles(std::function<void(const OdString&)> onError, const RootPath& root,
                              const std::function<void(OdString)>& onFile,
                              const std::function<void(OdString)>& onUnread) {
    const RepoIgnore ignore(std::move(onError), root);
    const NameRules rules(ignore);
    const ExcludesName isExcluded = [&rules](const OdString& name) { return rules.exclude(name); };
    const auto ignoreFile =
        root.relativePathTo(root.propertiesPath() + ut::FileName::getPathSeparator() + L"ignore");
    if (!ignore.isRead_ && ignoreFile)
        onUnread(*ignoreFile);
    return visitRepoFiles(root, isExcluded, onFile, onUnread);
}

Expected<void> visitRepoFiles(const RootPath& root,
                              const std::function<bool(const OdString&)>& isExcluded,
                              const std::function<void(OdString)>& onFile,
                              const std::function<void(OdString)>& onUnread) {
    const ExcludesName isLeftOut = [&isExcluded](const OdString& name) {
        return name == metadataFolder || isExcluded(name);
    };
    const TakePath passFolder = passOver;
    Walk walk(0, isLeftOut, onFile, passFolder, onUnread);
    walk.run(root.path(), {}, {});

    const OdString properties = root.propertiesPath();
    const Expected<OdString> relativeProperties = root.relativePathTo(properties);
    if (!relativeProperties)
        return relativeProperties.error();
    walk.run(properties, *relativeProperties,
             *relativeProperties + ut::FileName::getPathSeparator());
    return {};
}

}  // namespace common
