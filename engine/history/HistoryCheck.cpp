#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/HistoryCheck.h>
#include <engine/history/JournalEntry.h>
#include <engine/history/LinesInternal.h>
#include <engine/history/SchemaInternal.h>
#include <engine/history/SumsInternal.h>
#include <platform/ut/Paths.h>

#include <algorithm>
#include <cstddef>
#include <functional>

namespace qrv {

namespace {

class Check {
public:
    explicit Check(History& history) : history_(history) {}

    std::vector<OdString> run() {
        attempt([this] { checkPages(); });
        attempt([this] { checkSchema(); });
        attempt([this] { checkOwners(); });
        attempt([this] { checkCommits(); });
        attempt([this] { checkSizes(); });
        attempt([this] { checkLines(); });
        attempt([this] { history_.references(); });
        attempt([this] { checkSum(history_.database()); });
        attempt([this] { checkHeadFiles(); });
        attempt([this] { notedEntry(history_); });
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
        areAllRead_ = readCount_ == numbers.size();
    }

    void checkCommit(std::int64_t number) {
        const std::optional<CommitEntry> entry = history_.commitByNumber(number);
        if (!entry)
            return addCause(OdString::format(tr(L"commit %i is missing"), number));
        const NewCommit contents = {entry->parents, entry->author, entry->message,
                                    entry->timeSeconds, history_.deltas(entry->hash)};
        sizes_ = continuedSizes(sizes_, entry->hash, contents.deltas);
        ++readCount_;
        if (hashOf(contents) != entry->hash)
            addCause(OdString::format(tr(L"commit %i is not the one that its hash names"), number));
    }

    /// What was found of them while the commits were read, if all could be.
    void checkSizes() {
        Database& database = history_.database();
        if (areAllRead_ && database.schemaVersion() >= layoutWithSums &&
            notedSizes(database) != sizes_)
            addCause(tr(L"the sizes of its files are not those that were written"));
    }

    void checkLines() {
        Database& database = history_.database();
        if (!areAllRead_ || database.schemaVersion() < layoutWithPackedUrls)
            return;
        if (const std::int64_t number = firstWrongLine(database))
            addCause(OdString::format(tr(L"commit %i is on no line of first parents"), number));
    }

    void checkHeadFiles() {
        const OdString head = history_.note(headNote);
        if (history_.headFiles() != history_.tree(head))
            addCause(tr(L"the files of HEAD are not those of its commit"));
    }

    History& history_;
    /// The sum of the sizes that were read so far.
    OdString sizes_;
    std::size_t readCount_ = 0;
    bool areAllRead_ = false;
    std::vector<OdString> problems_;
};

}  // namespace

std::vector<OdString> problemsOf(History& history) {
    return Check(history).run();
}

}  // namespace qrv
