#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

#include <string>
#include <vector>

namespace qrv {

/// The files, of `paths`, that a word stands for which a person typed: the file of that path, or
/// those below that folder; else, when the word is a glob (see PathGlob), those that it matches,
/// where one without a "/" means names in the current folder and all below it; else the one whose
/// name ends in the word, with or without its extension. Never an expression.
///
/// None is no error. Fails, and names some of them, when several names end in the word.
Expected<std::vector<OdString>> filesOfWord(const common::RootPath& root, const std::string& word,
                                            const std::vector<OdString>& paths);

/// Up to a few of `paths` that somebody may have meant who typed the word: whose names have it
/// somewhere, whatever the letter case, or are hardly another word.
std::vector<OdString> nearPaths(const OdString& word, const std::vector<OdString>& paths);

}  // namespace qrv
