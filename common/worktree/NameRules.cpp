#include <common/worktree/NameRulesInternal.h>

#include <algorithm>
#include <cstddef>

namespace common {

NameRules::NameRules(const std::vector<std::regex>& expressions)
    : rules_(expressions.begin(), expressions.end()) {
}

NameRules::NameRules(const RepoIgnore& ignore) {
    for (std::size_t i = 0; i < ignore.expressions_.size(); ++i) {
        const IgnoreLine& line = ignore.lines_[i];
        if (line.isPlainGlob())
            rules_.emplace_back(line);
        else
            rules_.emplace_back(
                Expression(line.expression(), line.letterCase(), ignore.expressions_[i]));
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
    if (const auto* glob = std::get_if<IgnoreLine>(&rule))
        return glob->plainGlobMatches(nameNarrow);
    if (const auto* expression = std::get_if<Expression>(&rule))
        return expression->matches(nameNarrow);
    return std::regex_match(nameNarrow, std::get<std::regex>(rule));
}

}  // namespace common
