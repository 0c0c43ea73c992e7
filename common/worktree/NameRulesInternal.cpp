#include <common/worktree/NameRulesInternal.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace common {

NameRules::NameRules(const std::vector<std::regex>& expressions)
    : rules_(expressions.begin(), expressions.end()) {
}

NameRules::NameRules(const RepoIgnore& ignore) {
    for (std::size_t i = 0; i < ignore.expressions_.size(); ++i) {
        if (std::optional<SimpleGlob> glob = SimpleGlob::from(ignore.lines_[i]))
            rules_.emplace_back(std::move(*glob));
        else
            rules_.emplace_back(ignore.expressions_[i]);
    }
}

bool NameRules::exclude(const OdString& name) const {
    if (rules_.empty())
        return false;
    const std::string nameNarrow = name.toNarrow();
    return std::any_of(rules_.begin(), rules_.end(),
                       [&](const Rule& rule) { return matches(rule, nameNarrow); });
}

bool NameRules::matches(const Rule& rule, const std::string& nameNarrow) {
    if (const auto* glob = std::get_if<SimpleGlob>(&rule))
        return glob->matches(nameNarrow);
    return std::regex_match(nameNarrow, std::get<std::regex>(rule));
}

}  // namespace common
