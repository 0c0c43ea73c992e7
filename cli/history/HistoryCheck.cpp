#include <cli/Message.h>
#include <cli/Translation.h>
#include <cli/history/HistoryCheck.h>
#include <cli/history/Plan.h>
#include <cli/history/SchemaInternal.h>
#include <platform/ut/Paths.h>

#include <algorithm>
#include <functional>

namespace qrv_cli {

namespace {

class Check {
public:
    explicit Check(History& history) : history_(history) {}

    std::vector<OdString> run() {
        attempt([this] { checkPages(); });
        attempt([this] { checkSchema(); });
        attempt([this] { checkOwners(); });
        attempt([this] { checkCommits(); });
        attempt([this] { history_.references(); });
        attempt([this] { checkHeadFiles(); });
        attempt([this] { notedPlan(history_); });
        return std::move(problems_);
    }

private:
    void attempt(const std::function<void()>& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            add(error.description());
        }
    }

    /// Damage at one place is met by several steps.
    void add(const OdString& problem) {
        if (std::find(problems_.begin(), problems_.end(), problem) == problems_.end())
            problems_.push_back(problem);
    }

    void addCause(const OdString& cause) {
        add(OdString::format(tr(L"The history '%ls' is damaged: %ls"),
                             printable(history_.database().path()), cause));
    }

    void checkPages() {
        for (const OdString& line : ut::splitByChar(history_.database().damage(), L"\n", false))
            addCause(printable(line));
    }

    void checkSchema() {
        for (const OdString& difference : differencesOfSchema(history_.database()))
            addCause(difference);
    }

    void checkOwners() {
        Statement orphans = history_.database().prepare("PRAGMA foreign_key_check");
        while (orphans.step())
            addCause(OdString::format(tr(L"a row of the table '%ls' belongs to no commit"),
                                      printable(orphans.text(0))));
    }

    void checkCommits() {
        std::vector<std::int64_t> numbers;
        Statement query = history_.database().prepare("SELECT number FROM commits ORDER BY number");
        while (query.step())
            numbers.push_back(query.integer(0));
        for (const std::int64_t number : numbers)
            attempt([this, number] { checkCommit(number); });
    }

    void checkCommit(std::int64_t number) {
        const std::optional<CommitEntry> entry = history_.commitByNumber(number);
        if (!entry)
            return addCause(OdString::format(tr(L"commit %i is missing"), number));
        const NewCommit contents = {entry->parents, entry->author, entry->message,
                                    entry->timeSeconds, history_.deltas(entry->hash)};
        if (hashOf(contents) != entry->hash)
            addCause(OdString::format(tr(L"commit %i is not the one that its hash names"), number));
    }

    void checkHeadFiles() {
        const OdString head = history_.note(headNote);
        if (history_.headFiles() != history_.tree(head))
            addCause(tr(L"the files of HEAD are not those of its commit"));
    }

    History& history_;
    std::vector<OdString> problems_;
};

}  // namespace

std::vector<OdString> problemsOf(History& history) {
    return Check(history).run();
}

}  // namespace qrv_cli
