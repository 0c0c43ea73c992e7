#pragma once

#include <common/worktree/RepoIgnore.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>

#include <regex>
#include <string>
#include <vector>

namespace qrv_test {

/// A repository whose ignore rules are loaded, also again and again.
class RepoIgnoreFixture : public testing::Test {
protected:
    /// Loads the rules; what `onError` was told is in `messages`.
    std::vector<std::regex> load() {
        messages.clear();
        const auto onError = [this](const OdString& text) { messages.push_back(text.toNarrow()); };
        return common::RepoIgnore(onError, repository.root).expressions();
    }

    /// The names that the one rule `line` matches.
    std::vector<std::string> matched(const std::string& line,
                                     const std::vector<std::string>& names) {
        repository.writeRules(line);
        const std::vector<std::regex> rules = load();
        std::vector<std::string> found;
        for (const std::string& name : names) {
            if (rules.size() == 1 && std::regex_match(name, rules[0]))
                found.push_back(name);
        }
        return found;
    }

    std::string ignoreFile() const {
        return readFile(repository.folder / ".qrv/properties/ignore");
    }

    TemporaryRepository repository;
    std::vector<std::string> messages;
};

}  // namespace qrv_test
