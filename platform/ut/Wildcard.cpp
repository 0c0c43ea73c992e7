#include <platform/ut/WildcardInternal.h>

namespace ut {

bool matchesWildcards(const OdString& name, const OdString& pattern) {
    int nameAt = 0;
    int patternAt = 0;
    // Behind the last "*" met, and how far into the name it reaches. Only the last one is ever
    // tried again: whatever an earlier one could take over, the last one can.
    int behindStar = -1;
    int starEnd = 0;
    while (nameAt < name.getLength()) {
        const bool hasMore = patternAt < pattern.getLength();
        if (hasMore && pattern[patternAt] == L'*') {
            behindStar = ++patternAt;
            starEnd = nameAt;
        } else if (hasMore && (pattern[patternAt] == L'?' || pattern[patternAt] == name[nameAt])) {
            ++patternAt;
            ++nameAt;
        } else if (behindStar >= 0) {
            patternAt = behindStar;
            nameAt = ++starEnd;
        } else {
            return false;
        }
    }
    while (patternAt < pattern.getLength() && pattern[patternAt] == L'*')
        ++patternAt;
    return patternAt == pattern.getLength();
}

}  // namespace ut
