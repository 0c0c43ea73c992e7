#include <engine/history/JournalEntry.h>
#include <engine/maintenance/NamedVersions.h>

#include <optional>

namespace qrv {

namespace {

class Naming {
public:
    Naming(History& history, const std::function<void(const OdString&)>& onError)
        : history_(history), onError_(onError) {}

    NamedVersions run() {
        std::vector<std::int64_t> numbers;
        attempt([this, &numbers] { numbers = commitNumbers(history_); });
        for (const std::int64_t number : numbers)
            attempt([this, number] { addCommit(number); });
        attempt([this] { addNotedEntry(); });
        return std::move(named_);
    }

private:
    void attempt(const std::function<void()>& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            onError_(error.description());
        }
    }

    void add(const OdString& url, const VersionName& name) {
        if (!url.isEmpty())
            named_.emplace(url, name);
    }

    void addCommit(std::int64_t number) {
        const std::optional<CommitEntry> entry = history_.commitByNumber(number);
        if (!entry)
            return;
        for (const FileDelta& delta : history_.deltas(entry->hash))
            add(delta.url, {.path = delta.path, .commit = number});
    }

    void addNotedEntry() {
        const std::optional<JournalEntry> entry = notedEntry(history_);
        if (!entry)
            return;
        for (const TreeStep& file : entry->steps) {
            add(file.before, {.path = file.path});
            add(file.after, {.path = file.path});
        }
    }

    History& history_;
    const std::function<void(const OdString&)>& onError_;
    NamedVersions named_;
};

}  // namespace

std::vector<std::int64_t> commitNumbers(History& history) {
    std::vector<std::int64_t> numbers;
    Statement query = history.database().prepare("SELECT number FROM commits ORDER BY number");
    while (query.step())
        numbers.push_back(query.integer(0));
    return numbers;
}

NamedVersions namedVersions(History& history, const std::function<void(const OdString&)>& onError) {
    return Naming(history, onError).run();
}

}  // namespace qrv
