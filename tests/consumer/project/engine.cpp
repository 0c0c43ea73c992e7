#include <engine/operations/NamedReferences.h>

#include <iostream>

namespace {

class SilentWork : public qrv::Work {
public:
    void add(std::int64_t) override {}
};

class PrintingCaller : public qrv::Caller {
public:
    void note(const OdString& text) override { std::cerr << text.toNarrow() << '\n'; }
    std::unique_ptr<qrv::Work> beginWork(const OdString&, std::size_t) override {
        return std::make_unique<SilentWork>();
    }
    std::string action() const override { return "list"; }
    bool isPerson(std::uint32_t) const override { return false; }
    Expected<std::vector<OdString>> trustedFolders() const override {
        return std::vector<OdString>();
    }
    bool followsSharedFolders() const override { return true; }
};

}  // namespace

// Lists the branches of the repository that holds the given folder, or says why it cannot.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 2)
        return 2;
    PrintingCaller caller;
    const auto branches = qrv::listReferences(arguments[1], common::RefType::Branch, caller);
    if (!branches) {
        std::cerr << branches.error().message.toNarrow() << '\n';
        return 1;
    }
    for (const qrv::NamedReference& branch : *branches) {
        std::cout << (branch.isCurrent ? "* " : "  ") << branch.name.toNarrow();
        if (branch.commit)
            std::cout << ' ' << branch.commit->number << ' ' << branch.commit->message.toNarrow();
        std::cout << '\n';
    }
    return 0;
}
