// Makes a long history, for measuring what grows with it: adds commits to the repository in a
// folder, each of which gives one file the contents that another one had at the beginning. The last
// one gives all files their own contents back, so that the working tree is as it was.
//
//     qrv_long_history FOLDER COMMITS

#include <common/repository/RootPath.h>
#include <engine/history/History.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using qrv::HeadFile;
using qrv::History;

std::vector<HeadFile> filesOf(History& history) {
    std::vector<HeadFile> files;
    history.visitHeadFiles([&files](HeadFile file) { files.push_back(std::move(file)); });
    return files;
}

qrv::FileDelta contentsOf(const HeadFile& source, const HeadFile& target) {
    return {target.path, source.file.contents, std::nullopt, source.file.sizeBytes};
}

/// Which file the commit of that number changes, and whose contents it gets: by strides that reach
/// all of them.
std::pair<std::size_t, std::size_t> placesOf(std::int64_t number, std::size_t count) {
    const auto step = static_cast<std::size_t>(number);
    return {step * 7 % count, (step * 7 + step / count + 1) % count};
}

void addCommits(History& history, const OdString& branch, std::int64_t count) {
    const std::vector<HeadFile> files = filesOf(history);
    qrv::DatabaseTransaction transaction(history.database());
    OdString parent = history.reference(branch, common::RefType::Branch).value();
    std::int64_t timeSeconds = history.commit(parent)->timeSeconds;
    std::set<std::size_t> changed;
    const auto add = [&](const OdString& message, std::vector<qrv::FileDelta> deltas) {
        parent = history.add({{parent}, L"bench", message, ++timeSeconds, std::move(deltas)}).hash;
    };
    for (std::int64_t number = 1; number < count; ++number) {
        const auto [target, source] = placesOf(number, files.size());
        changed.insert(target);
        add(OdString::format(L"change %i", number), {contentsOf(files[source], files[target])});
    }
    std::vector<qrv::FileDelta> back;
    for (const std::size_t place : changed)
        back.push_back(contentsOf(files[place], files[place]));
    add(L"back", std::move(back));
    history.setNote(qrv::headNote, parent);
    history.setReference(branch, common::RefType::Branch, parent);
    transaction.commit();
}

void makeLonger(const OdString& folder, std::string_view digits) {
    std::int64_t count = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), count);
    const Expected<common::RootPath> root = common::RootPath::get(folder, false);
    if (!root)
        throw std::runtime_error(root.error().message.toNarrow());
    History history = History::open(*root, qrv::Database::Access::create);
    addCommits(history, L"master", count);
}

}  // namespace

int main(int argumentCount, char** arguments) try {
    if (argumentCount != 3)
        throw std::runtime_error("usage: qrv_long_history FOLDER COMMITS");
    makeLonger(OdString::fromNarrow(arguments[1]), arguments[2]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
