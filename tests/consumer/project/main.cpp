#include <common/common.h>

#include <iostream>

namespace {

class PrintingHost : public common::IoInterface {
public:
    bool acceptsPath(const OdString&) const override { return true; }
    void reportResult(Expected<void> result) const override {
        std::cout << "written: " << (result ? "yes" : result.error().message.toNarrow()) << '\n';
    }
};

int fail(const ErrorMessage& error) {
    std::cerr << error.message.toNarrow() << '\n';
    return 1;
}

}  // namespace

// Makes the given folder a repository, and lists its files and its branch.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 2)
        return 2;
    const PrintingHost host;
    const Expected<common::RootPath> root =
        common::RootPath::get(OdString::fromNarrow(arguments[1]), true);
    if (!root)
        return fail(root.error());
    common::Cache::create(*root, host);
    const auto cache = common::Cache::get(*root, host);
    if (!cache)
        return fail(cache.error());
    std::cout << "branch: " << (*cache)->read().head.reference.toNarrow() << '\n';
    const auto files = common::collectRepoFiles(
        [](const OdString& problem) { std::cerr << problem.toNarrow() << '\n'; }, *root);
    if (!files)
        return fail(files.error());
    for (const common::File& file : *files)
        std::cout << file.path.toNarrow() << '\n';
    return 0;
}
