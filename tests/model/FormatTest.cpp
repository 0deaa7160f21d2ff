#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "model/Format.h"

namespace quibel::test {
namespace {

struct Case {
  double seconds;
  const char* text;
};

void PrintTo(const Case& testCase, std::ostream* out) {
  *out << testCase.seconds << " gives " << testCase.text;
}

class FormatTest : public testing::TestWithParam<Case> {};

TEST_P(FormatTest, GivesMinutesAndTenths) {
  EXPECT_EQ(format(GetParam().seconds), GetParam().text);
}

constexpr double infinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(Plain, FormatTest,
                         testing::Values(Case{0, "00:00.0"}, Case{5, "00:05.0"},
                                         Case{59.94, "00:59.9"}, Case{65.27, "01:05.3"},
                                         Case{600, "10:00.0"}, Case{3599.9, "59:59.9"}));

INSTANTIATE_TEST_SUITE_P(RoundedAfterTheMinutesWereSplitOff, FormatTest,
                         testing::Values(Case{9.96, "00:10.0"}, Case{59.95, "00:60.0"},
                                         Case{59.96, "00:60.0"}, Case{119.97, "01:60.0"}));

INSTANTIATE_TEST_SUITE_P(MinutesGrowBeyondTwoDigits, FormatTest,
                         testing::Values(Case{3600, "60:00.0"}, Case{6000.5, "100:00.5"},
                                         Case{36000, "600:00.0"}));

INSTANTIATE_TEST_SUITE_P(NotFinite, FormatTest,
                         testing::Values(Case{infinity, "00:00.0"}, Case{-infinity, "00:00.0"},
                                         Case{std::numeric_limits<double>::quiet_NaN(),
                                              "00:00.0"}));

INSTANTIATE_TEST_SUITE_P(NegativeIsNotClamped, FormatTest,
                         testing::Values(Case{-1.5, "00:-1.5"}, Case{-0.04, "00:-0.0"},
                                         Case{-61.5, "-1:-1.5"}, Case{-725, "-12:-5.0"}));

INSTANTIATE_TEST_SUITE_P(BeyondSixtyFourBits, FormatTest,
                         testing::Values(Case{1e300, "153722867280912930:00.0"},
                                         Case{-1e300, "-153722867280912930:-0.0"}));

/// The Spanish locale, made in a folder of its own since few systems have it installed.
class SpanishLocaleTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(mkdtemp(folder_.data()));
    const std::string locale = folder_ + "/es_ES.UTF-8";
    ASSERT_EQ(std::system(("localedef -i es_ES -f UTF-8 " + locale).c_str()), 0)
        << "the package locales is missing";
    setenv("LOCPATH", folder_.c_str(), 1);
    ASSERT_TRUE(std::setlocale(LC_ALL, "es_ES.UTF-8"));
  }

  void TearDown() override {
    EXPECT_TRUE(std::setlocale(LC_ALL, "C"));
    unsetenv("LOCPATH");
    std::filesystem::remove_all(folder_);
  }

 private:
  std::string folder_ = testing::TempDir() + "locale-XXXXXX";
};

TEST_F(SpanishLocaleTest, PointStaysWhereNumbersHaveAComma) {
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_EQ(format(65.27), "01:05.3");
}

}  // namespace
}  // namespace quibel::test
