#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>

#include "ornex_rt.h"

namespace {

TEST(DataSymbols, VersionIsFourNumbersFromTheProjectVersion)
{
    const std::string version = ornex_rt_version;
    EXPECT_TRUE(std::regex_match(version, std::regex(R"(\d+\.\d+\.\d+\.\d+)"))) << version;
    // The project version may give fewer than four components; the missing
    // ones read as zero.
    std::string expected = ORNEX_EXPECTED_VERSION;
    while (std::count(expected.begin(), expected.end(), '.') < 3) {
        expected += ".0";
    }
    EXPECT_EQ(version, expected);
}

TEST(DataSymbols, BuildDateIsMonthDayYear)
{
    const std::string date = ornex_rt_build_date;
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(date, parts,
                                 std::regex(R"((Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) ([1-9]\d?) (\d{4}))")))
        << date;
    const int day = std::stoi(parts[2]);
    EXPECT_GE(day, 1);
    EXPECT_LE(day, 31);
    EXPECT_GE(std::stoi(parts[3]), 1970);
}

} // namespace
