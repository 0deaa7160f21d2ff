#include <limits>

#include <gtest/gtest.h>

#include "views/SpokenTime.h"

namespace quibel {
namespace {

TEST(SpokenTime, IsInMinutesSecondsAndTenths) {
  const std::pair<double, const char*> cases[] = {
      {0, "0 segundos"},
      {0.1, "0,1 segundos"},
      {1, "1 segundo"},
      {19.5, "19,5 segundos"},
      {20, "20 segundos"},
      {59.94, "59,9 segundos"},
      {59.96, "1 minuto"},
      {61, "1 minuto 1 segundo"},
      {65.3, "1 minuto 5,3 segundos"},
      {119.99, "2 minutos"},
      {3725.25, "62 minutos 5,3 segundos"},
      {1e7, "166666 minutos 40 segundos"},
      {-0.2, "menos 0,2 segundos"},
      {-0.04, "0 segundos"},
      {-61, "menos 1 minuto 1 segundo"},
      {std::numeric_limits<double>::infinity(), "tiempo desconocido"},
      {std::numeric_limits<double>::quiet_NaN(), "tiempo desconocido"},
  };
  for (const auto& [seconds, said] : cases) {
    EXPECT_EQ(spokenTime(seconds).toStdString(), said) << seconds;
  }
}

TEST(SpokenHandle, SaysWhereItStandsAndHowLongTheFragmentIs) {
  EXPECT_EQ(spokenHandle(19.5, 20.5).toStdString(), "19,5 segundos, fragmento de 20,5 segundos");
  EXPECT_EQ(spokenHandle(0, 40).toStdString(), "0 segundos, fragmento de 40 segundos");
}

TEST(SpokenHandle, SaysThatNoMoreThanFortySecondsAreSaved) {
  EXPECT_EQ(
      spokenHandle(100, 65.3).toStdString(),
      "1 minuto 40 segundos, fragmento de 1 minuto 5,3 segundos, solo se guardan 40 segundos");
}

TEST(SpokenHandle, SaysNothingOfFortySecondsThatReadAsForty) {
  // A sum of tenths ends a hair above what it reads as.
  EXPECT_EQ(spokenHandle(40.1, 40 + 1e-9).toStdString(), "40,1 segundos, fragmento de 40 segundos");
}

}  // namespace
}  // namespace quibel
