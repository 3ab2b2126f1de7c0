#include "sabrel/platform/date.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::NumberOf;

const LocaleFacts kAmerican;
const LocaleFacts kGerman{",", ".", ".", ":", DateOrder::kDayMonthYear};
const LocaleFacts kDotted{",", " ", ".", ".", DateOrder::kDayMonthYear};
const LocaleFacts kSwedish{",", " ", "-", ".", DateOrder::kYearMonthDay};

TEST(Date, SerialsAndCivilDatesTellTheSame) {
  const std::tuple<const char*, double, CivilDate> rows[] = {
      {"zero date", 0.0, {}},
      {"time runs forwards below zero", -1.25, {1899, 12, 29, 6, 0, 0}},
      {"evening of the first day", -657434.75, {100, 1, 1, 18, 0, 0}},
      {"last second", 2958465 + 86399 / 86400.0, {9999, 12, 31, 23, 59, 59}}};
  for (const auto& [name, serial, parts] : rows) {
    EXPECT_EQ(Date(serial).ToCivil(), parts) << name;
    EXPECT_DOUBLE_EQ(Date::FromCivil(parts).Serial(), serial) << name;
  }
  EXPECT_EQ(Date(59.6 / 86400).ToCivil(), (CivilDate{1899, 12, 30, 0, 1, 0})) << "a carry";
  EXPECT_EQ(Date(-1 - 86399.6 / 86400).ToCivil(), (CivilDate{1899, 12, 30})) << "into the next day";
  EXPECT_TRUE(Date(-0.0).IsZero());
}

TEST(Date, WhatIsOutsideTheCalendarIsRefused) {
  for (const double serial : {-657435.0, 2958466.0, 2958465.999999, std::nan("")}) {
    EXPECT_EQ(NumberOf([&] { return Date(serial).ToCivil(); }), 6) << serial;
  }
  const CivilDate wrong[] = {{99, 12, 31},   {10000, 1, 1},    {2024, 13, 1},      {2023, 2, 29},
                             {2024, 1, 257}, {2024, 1, 1, 24}, {2024, 1, 1, 0, -1}};
  for (const CivilDate& parts : wrong) {
    EXPECT_EQ(NumberOf([&] { return Date::FromCivil(parts); }), 5) << parts.year << parts.month;
  }
}

TEST(Date, TextFollowsTheLocale) {
  const Date afternoon = Date::FromCivil({2024, 3, 9, 17, 5, 0});
  EXPECT_EQ(FormatDateTime(afternoon, kSwedish), "2024-03-09 17.05.00");
  EXPECT_EQ(GeneralDateText(afternoon, kAmerican), "03/09/2024 17:05:00");
  EXPECT_EQ(GeneralDateText(afternoon, kGerman), "09.03.2024 17:05:00");
  EXPECT_EQ(GeneralDateText(Date(45360.0), kSwedish), "2024-03-09");
  EXPECT_EQ(GeneralDateText(Date(-0.25), kSwedish), "06.00.00");
}

TEST(Date, TextIsReadInTheLocalesOrder) {
  const std::tuple<const char*, const LocaleFacts&, const char*> rows[] = {
      {"2024-03-09T17:05:00", kSwedish, "2024-03-09 17:05:00"},
      {" 2024-03-09  17:05 ", kAmerican, "2024-03-09 17:05:00"},
      {"2024-03-09 17:05:30.75", kAmerican, "2024-03-09 17:05:31"},
      {"3/9/2024", kAmerican, "2024-03-09 00:00:00"},
      {"3/9/2024", kGerman, "2024-09-03 00:00:00"},
      {"01/01/1995", kSwedish, "1995-01-01 00:00:00"},
      {"28-2-29", kGerman, "2029-02-28 00:00:00"},
      {"28-2-30", kGerman, "1930-02-28 00:00:00"},
      {"13.05.00", kSwedish, "1899-12-30 13:05:00"},
      {"13.45.00", kDotted, "1899-12-30 13:45:00"},
      {"12:30 AM", kAmerican, "1899-12-30 00:30:00"},
      {"12pm", kAmerican, "1899-12-30 12:00:00"},
      {"1/1/1899 6:00 PM", kAmerican, "1899-01-01 18:00:00"}};
  for (const auto& [text, locale, expected] : rows) {
    Date date;
    EXPECT_TRUE(ParseDate(text, locale, date)) << text;
    EXPECT_EQ(FormatDateTime(date, kAmerican), expected) << text;
  }
}

TEST(Date, OtherTextsAreNoDatesAndLeaveTheDateAlone) {
  Date date(1.0);
  for (const char* text :
       {"2-29-29", "012:30", "13:00 PM", "24:00", "1:60", "13/1/2024", "1/1-2024", "1/1/99999",
        "1/1/099", "2024-03-09T", "2024-03-0917:05", "2024-03-09 17:05:00Z", "3.14", "7", ""}) {
    EXPECT_FALSE(ParseDate(text, kAmerican, date)) << text;
  }
  EXPECT_EQ(date, Date(1.0));
}

}  // namespace
}  // namespace sabrel
