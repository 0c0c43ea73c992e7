#include <platform/qut/toQt.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

std::vector<unsigned> unitsOf(const QString& text) {
    std::vector<unsigned> units;
    for (const QChar unit : text)
        units.push_back(unit.unicode());
    return units;
}

TEST(ToQt, KeepsEveryUnit) {
    const std::vector<std::vector<unsigned>> cases = {
        {},       {'a', 'b'},       {0xE4, 0x20AC},   {'a', 0, 'b'},
        {0},      {0xD83D, 0xDCD0}, {0xDCD0, 0xD83D}, {0xD800},
        {0xDCFF}, {0xFEFF, 'a'},    {0xFFFE, 'a'},    {0xFFFF},
    };
    for (const std::vector<unsigned>& units : cases)
        EXPECT_EQ(unitsOf(qut::toQt(std::wstring(units.begin(), units.end()))), units);
}

TEST(ToQt, GivesTheSurrogatePairOfAWideCharacter) {
    EXPECT_EQ(unitsOf(qut::toQt(OdString("\xF0\x9F\x93\x90"))),
              (std::vector<unsigned>{0xD83D, 0xDCD0}));
}

TEST(ToQt, GivesAnEmptyTextThatIsNotNull) {
    EXPECT_TRUE(qut::toQt(OdString()).isEmpty());
    EXPECT_FALSE(qut::toQt(OdString()).isNull());
}

}  // namespace
