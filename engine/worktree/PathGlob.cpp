#include <engine/worktree/PathGlob.h>

#include <algorithm>

namespace qrv {

namespace {

bool isHigh(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLow(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// A pair of units is one character to whoever types a "?".
std::vector<char32_t> charactersOf(const OdString& text) {
    constexpr char32_t firstOfPairs = 0x10000;
    std::vector<char32_t> characters;
    characters.reserve(static_cast<std::size_t>(text.getLength()));
    for (int index = 0; index < text.getLength(); ++index) {
        const wchar_t unit = text[index];
        const wchar_t next = index + 1 < text.getLength() ? text[index + 1] : L'\0';
        if (isHigh(unit) && isLow(next)) {
            characters.push_back(firstOfPairs + (static_cast<char32_t>(unit - 0xD800) << 10) +
                                 static_cast<char32_t>(next - 0xDC00));
            ++index;
        } else {
            characters.push_back(static_cast<char32_t>(unit));
        }
    }
    return characters;
}

/// For each place in a text, whether what was matched so far can end there.
using Ends = std::vector<char>;

/// Behind a part that is one character.
template <class Matches>
Ends afterOne(const Ends& before, const std::vector<char32_t>& text, Matches matches) {
    Ends after(before.size(), 0);
    for (std::size_t place = 0; place < text.size(); ++place)
        after[place + 1] = static_cast<char>(before[place] != 0 && matches(text[place]));
    return after;
}

/// Behind a part that is any number of characters.
template <class Matches>
Ends afterMany(Ends ends, const std::vector<char32_t>& text, Matches matches) {
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (ends[place] != 0 && matches(text[place]))
            ends[place + 1] = 1;
    }
    return ends;
}

Ends afterFolders(Ends ends, const std::vector<char32_t>& text) {
    bool canBegin = false;
    for (std::size_t place = 0; place < text.size(); ++place) {
        canBegin = canBegin || ends[place] != 0;
        if (canBegin && text[place] == U'/')
            ends[place + 1] = 1;
    }
    return ends;
}

}  // namespace

bool PathGlob::isGlob(const OdString& word) {
    return word.find(L'*') >= 0 || word.find(L'?') >= 0;
}

PathGlob::PathGlob(const OdString& folder, const OdString& glob) {
    for (const char32_t character : charactersOf(folder.isEmpty() ? folder : folder + L'/'))
        parts_.push_back({Kind::itself, character});
    addGlob(charactersOf(glob));
    // There are parts to count only now.
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
    fewest_ =
        static_cast<std::size_t>(std::count_if(parts_.begin(), parts_.end(), [](const Part& part) {
            return part.kind == Kind::itself || part.kind == Kind::any;
        }));
}

void PathGlob::addGlob(const std::vector<char32_t>& glob) {
    for (std::size_t place = 0; place < glob.size();) {
        if (glob[place] == U'*') {
            place = addStars(glob, place);
            continue;
        }
        parts_.push_back({glob[place] == U'?' ? Kind::any : Kind::itself, glob[place]});
        ++place;
    }
}

/// Stars in a row are one part, so that there are never more parts than twice the fewest characters
/// and one. Gives the place behind them.
std::size_t PathGlob::addStars(const std::vector<char32_t>& glob, std::size_t begin) {
    std::size_t end = begin;
    while (end < glob.size() && glob[end] == U'*')
        ++end;
    const bool beginsName = begin == 0 || glob[begin - 1] == U'/';
    if (end - begin == 1) {
        parts_.push_back({Kind::anyInName});
    } else if (beginsName && end < glob.size() && glob[end] == U'/') {
        parts_.push_back({Kind::anyFolders});
        ++end;
    } else {
        parts_.push_back({Kind::anything});
    }
    return end;
}

bool PathGlob::matches(const OdString& path) const {
    const std::vector<char32_t> text = charactersOf(path);
    if (text.size() < fewest_)
        return false;
    const auto isOfName = [](char32_t character) { return character != U'/'; };
    Ends ends(text.size() + 1, 0);
    ends[0] = 1;
    for (const Part& part : parts_) {
        switch (part.kind) {
            case Kind::itself:
                ends = afterOne(ends, text, [&](char32_t each) { return each == part.character; });
                break;
            case Kind::any:
                ends = afterOne(ends, text, isOfName);
                break;
            case Kind::anyInName:
                ends = afterMany(std::move(ends), text, isOfName);
                break;
            case Kind::anything:
                ends = afterMany(std::move(ends), text, [](char32_t) { return true; });
                break;
            case Kind::anyFolders:
                ends = afterFolders(std::move(ends), text);
                break;
        }
        // Most paths are out after the first character.
        if (std::none_of(ends.begin(), ends.end(), [](char end) { return end != 0; }))
            return false;
    }
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (ends[place] != 0 && text[place] == U'/')
            return true;
    }
    return ends.back() != 0;
}

}  // namespace qrv
