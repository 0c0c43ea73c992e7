#include <tests/catalogue/PoFile.h>
#include <tests/support/Files.h>

#include <sstream>
#include <stdexcept>
#include <string_view>

namespace qrv_test {

namespace {

char unescaped(char escape) {
    switch (escape) {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case '"':
        case '\\':
            return escape;
        default:
            throw std::runtime_error(std::string("unknown escape ") + escape);
    }
}

/// The text between the quotes of the line.
std::string quotedText(std::string_view line) {
    const std::size_t begin = line.find('"') + 1;
    std::string text;
    for (std::size_t i = begin; i + 1 < line.size(); ++i)
        text += line[i] == '\\' ? unescaped(line[++i]) : line[i];
    return text;
}

}  // namespace

std::vector<PoEntry> readPoFile(const std::filesystem::path& file) {
    std::vector<PoEntry> entries;
    std::string* current = nullptr;
    std::istringstream lines(readFile(file));
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.starts_with('#'))
            continue;
        if (line.starts_with("msgid \""))
            current = &entries.emplace_back().source;
        else if (line.starts_with("msgstr \"") && !entries.empty())
            current = &entries.back().translation;
        else if (!line.starts_with('"') || current == nullptr)
            throw std::runtime_error(file.string() + ": unknown line " + line);
        *current += quotedText(line);
    }
    if (entries.empty() || !entries.front().source.empty())
        throw std::runtime_error(file.string() + ": no header");
    entries.erase(entries.begin());
    return entries;
}

}  // namespace qrv_test
