#include <engine/history/PathHistory.h>
#include <engine/paths/PathParts.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace qrv {

namespace {

using Names = std::set<OdString>;

class PathWalk {
public:
    PathWalk(History& history, const OdString& path) : history_(history) {
        learn(path);
        isFolder_ = touching_.empty();
    }

    std::vector<CommitEntry> walk(std::vector<CommitEntry> commits, const OdString& path) {
        if (!commits.empty())
            namesAt_[commits.front().hash] = {path};
        std::erase_if(commits, [this](const CommitEntry& commit) { return !visit(commit); });
        return commits;
    }

private:
    /// Whether the commit changed the file. Tells the parents what its names are there.
    bool visit(const CommitEntry& commit) {
        const auto known = namesAt_.find(commit.hash);
        if (known == namesAt_.end())
            return false;
        const Names names = std::move(known->second);
        namesAt_.erase(known);
        Names namesBefore = names;
        const bool isChanged = (isFolder_ || touching_.contains(commit.number)) &&
                               look(history_.deltas(commit.hash), names, namesBefore);
        for (std::size_t index = 0; index < commit.parents.size(); ++index)
            namesAt_[commit.parents[index]].merge(Names(index == 0 ? namesBefore : names));
        return isChanged;
    }

    bool look(const std::vector<FileDelta>& deltas, const Names& names, Names& namesBefore) {
        bool isChanged = false;
        for (const FileDelta& delta : deltas) {
            const bool isHere = isAmong(delta.path, names);
            isChanged =
                isChanged || isHere || (delta.previousPath && isAmong(*delta.previousPath, names));
            if (!isHere || isFolder_ || !delta.previousPath)
                continue;
            namesBefore.erase(delta.path);
            namesBefore.insert(*delta.previousPath);
            learn(*delta.previousPath);
        }
        return isChanged;
    }

    bool isAmong(const OdString& path, const Names& names) const {
        return isFolder_ ? isChosen(path, {*names.begin()}) : names.contains(path);
    }

    /// Most commits change other files: their changes need not be read.
    void learn(const OdString& name) {
        const std::vector<std::int64_t> numbers = history_.commitsOfPath(name);
        touching_.insert(numbers.begin(), numbers.end());
    }

    History& history_;
    bool isFolder_ = false;
    std::set<std::int64_t> touching_;
    /// Of commits that are still to come. A folder has one name throughout.
    std::map<OdString, Names> namesAt_;
};

}  // namespace

std::vector<CommitEntry> commitsThatChanged(History& history, std::vector<CommitEntry> commits,
                                            const OdString& path) {
    return PathWalk(history, path).walk(std::move(commits), path);
}

}  // namespace qrv
