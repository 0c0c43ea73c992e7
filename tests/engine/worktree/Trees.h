#pragma once

#include <engine/history/History.h>
#include <tests/engine/history/Repository.h>

#include <sstream>
#include <string>

namespace qrv_test {

/// The tree that a text such as "a.txt=1 sub/b.txt=2" stands for; equal letters are equal contents.
inline qrv::Tree treeOf(const std::string& text) {
    qrv::Tree tree;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t mark = word.find('=');
        tree[OdString::fromNarrow(word.substr(0, mark))] = {url(word[mark + 1]), 1};
    }
    return tree;
}

/// The letter of a URL that `treeOf` made; "-" for none.
inline std::string letterOf(const OdString& url) {
    return url.isEmpty() ? "-" : std::string(1, url.toNarrow()[3]);
}

}  // namespace qrv_test
