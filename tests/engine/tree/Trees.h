#pragma once

#include <engine/tree/FileDelta.h>
#include <engine/tree/Tree.h>
#include <tests/engine/paths/Paths.h>

#include <cstdint>
#include <optional>
#include <random>
#include <sstream>
#include <string>

namespace qrv_test {

/// The storage URL of a plain file; equal letters name equal contents.
inline OdString url(char letter) {
    return OdString::fromNarrow("po:" + std::string(64, letter));
}

/// The letter of such a URL; "-" for none.
inline std::string letterOf(const OdString& url) {
    return url.isEmpty() ? "-" : std::string(1, url.toNarrow()[3]);
}

inline qrv::FileDelta file(const char* path, char letter, std::int64_t sizeBytes = 1,
                           const char* previousPath = "") {
    qrv::FileDelta delta = {relative(path), url(letter), std::nullopt, sizeBytes};
    if (*previousPath != '\0')
        delta.previousPath = relative(previousPath);
    return delta;
}

inline qrv::FileDelta removal(const char* path) {
    return {relative(path), OdString(), std::nullopt, 0};
}

/// The tree that a text such as "a.txt=1 sub/b.txt=2" stands for; equal letters are equal contents.
inline qrv::Tree treeOf(const std::string& text) {
    qrv::Tree tree;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t mark = word.find('=');
        tree[relative(OdString::fromNarrow(word.substr(0, mark)))] = {url(word[mark + 1]), 1};
    }
    return tree;
}

/// "path letter size, ..." of the files.
inline std::string shown(const qrv::Tree& tree) {
    std::string text;
    for (const auto& [path, treeFile] : tree)
        text += path.bytes() + " " + letterOf(treeFile.contents) + " " +
                std::to_string(treeFile.sizeBytes) + ", ";
    return text;
}

/// Up to six files, each with one of three contents.
inline qrv::Tree randomTree(std::mt19937& random) {
    std::string text;
    for (const char* const path : {"a", "b", "c/d", "c/e", "f", "g"}) {
        const std::string::value_type contents = "-123"[random() % 4];
        if (contents != '-')
            text += std::string(path) + '=' + contents + ' ';
    }
    return treeOf(text);
}

/// Random trees for properties that all of them have.
constexpr int randomTrials = 2000;

}  // namespace qrv_test
