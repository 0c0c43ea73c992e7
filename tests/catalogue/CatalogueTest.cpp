#include <platform/kernel/OdString.h>
#include <tests/catalogue/Host.h>
#include <tests/catalogue/PoFile.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qrv_test::Host;
using qrv_test::PoEntry;
using qrv_test::readPoFile;

std::vector<std::string> templateSources() {
    std::vector<std::string> sources;
    for (const PoEntry& entry : readPoFile(QRV_PO_FOLDER "/qrv.pot"))
        sources.push_back(entry.source);
    return sources;
}

std::vector<std::string> languages() {
    std::vector<std::string> names;
    std::istringstream lines(qrv_test::readFile(QRV_PO_FOLDER "/LINGUAS"));
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with('#'))
            names.push_back(line);
    }
    return names;
}

/// What a host is answered, or "(nothing)".
std::string lookedUp(const std::string& source) {
    const wxString* const text =
        wxTranslations::Get()->GetTranslatedString(wxString::FromUTF8(source));
    return text != nullptr ? text->utf8_string() : "(nothing)";
}

std::vector<PoEntry> translatedEntries(const std::string& language) {
    std::vector<PoEntry> entries = readPoFile(QRV_PO_FOLDER "/" + language + ".po");
    std::erase_if(entries, [](const PoEntry& entry) { return entry.translation.empty(); });
    return entries;
}

/// Each test is made for each language.
class Catalogue : public testing::TestWithParam<std::string> {
protected:
    const std::vector<PoEntry> entries = translatedEntries(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Of, Catalogue, testing::ValuesIn(languages()),
                         [](const auto& each) { return each.param; });

TEST_P(Catalogue, TranslatesEveryMessageAndNoOther) {
    std::set<std::string> translated;
    for (const PoEntry& entry : entries)
        translated.insert(entry.source);
    const std::vector<std::string> sources = templateSources();
    const std::set<std::string> wanted(sources.begin(), sources.end());
    std::vector<std::string> differences;
    std::set_symmetric_difference(wanted.begin(), wanted.end(), translated.begin(),
                                  translated.end(), std::back_inserter(differences));
    EXPECT_THAT(differences, testing::IsEmpty());
}

TEST_P(Catalogue, GivesAHostEachTranslation) {
    const Host host(GetParam());
    ASSERT_TRUE(host.isLoaded());
    for (const PoEntry& entry : entries)
        EXPECT_EQ(lookedUp(entry.source), entry.translation);
}

/// The first placeholder filled with an argument of the kind that the source has there.
OdString withOneFilled(const OdString& pattern, const std::string& placeholder) {
    return placeholder == "%i" ? OdString::format(pattern, 7) : OdString::format(pattern, L"text");
}

TEST_P(Catalogue, FillsThePlaceholdersWithTheArgumentsOfTheSource) {
    const std::regex placeholder("%(ls|i)");
    for (const PoEntry& entry : entries) {
        OdString text = OdString::fromNarrow(entry.translation);
        for (std::sregex_iterator each(entry.source.begin(), entry.source.end(), placeholder), end;
             each != end; ++each) {
            const OdString filled = withOneFilled(text, each->str());
            EXPECT_FALSE(filled == text) << entry.translation << " lacks " << each->str();
            text = filled;
        }
        EXPECT_FALSE(std::regex_search(text.toNarrow(), placeholder)) << text.toNarrow();
    }
}

TEST(CatalogueTemplate, HasTheMessagesOfTheLibraryAndTheProgram) {
    EXPECT_THAT(templateSources(),
                testing::IsSupersetOf({"Path: %ls is not a qrv directory.", "minutes ago",
                                       "Could not parse %ls, missing \"%ls\"",
                                       "More than one file found with the name %ls.\n",
                                       "Syntax: ", "Made a repository in '%ls'\n",
                                       "List the files that the ignore rules leave"}));
}

/// They report faults of a server or of another program, and are the same in every language.
TEST(CatalogueTemplate, HasNoneOfTheUntranslatedMessages) {
    for (const std::string& source : templateSources()) {
        for (const std::string untranslated :
             {"Failed to write Ignore file.", "Unsupported type", "Unsupported reftype",
              "Encounterd", "Expected json type", "Unable to find json key",
              "json key:", "Context:"})
            EXPECT_THAT(source, testing::Not(testing::HasSubstr(untranslated)));
    }
}

}  // namespace
