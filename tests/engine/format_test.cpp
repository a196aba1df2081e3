#include "engine/format.h"

#include <gtest/gtest.h>

#include "engine/record.h"
#include "tests/support/fakes.h"

namespace qv {
namespace {

Locale Pattern(const char* date, const char* sep = "/") {
  Locale l;
  l.short_date = date;
  l.date_separator = sep;
  return l;
}

TEST(FormatDate, EmptyDateAndPatterns) {
  Locale dmy = Pattern("dd/MM/yyyy");
  EXPECT_EQ(FormatDate(1, 1, 1904, dmy), "NO DATE");
  EXPECT_EQ(FormatDate(1, 1, 1800, dmy), "NO DATE");
  EXPECT_EQ(FormatDate(2, 1, 1904, dmy), "02/01/1904");
  EXPECT_EQ(FormatDate(5, 3, 2002, dmy), "05/03/2002");
  EXPECT_EQ(FormatDate(5, 3, 2002, Pattern("d/M/yy")), "5/3/02");
  EXPECT_EQ(FormatDate(5, 3, 2002, Pattern("MMM.d.yyyy", ".")), "03.5.2002");  // names as numbers
  EXPECT_EQ(FormatDate(5, 3, 2002, Pattern("yyyy-MMMM-dd", "-")), "2002--05");   // unknown token
  EXPECT_EQ(FormatDate(5, 3, 2002, Pattern("d/M")), "5/3/");
}

TEST(DateNumbers, LeapYearsWithoutCenturyException) {
  auto dmy = [](std::uint32_t n) {
    Dmy d = DateNumberToDmy(n);
    return std::to_string(d.day) + "/" + std::to_string(d.month) + "/" + std::to_string(d.year);
  };
  EXPECT_EQ(dmy(0), "1/1/1904");
  EXPECT_EQ(dmy(59), "29/2/1904");
  EXPECT_EQ(dmy(366), "1/1/1905");
  // 2100 is not a leap year in the Gregorian calendar, but is one here.
  std::uint32_t feb28 = DmyToDateNumber({28, 2, 2100});
  EXPECT_EQ(dmy(feb28 + 1), "29/2/2100");
  for (std::uint32_t n : {0u, 1u, 58u, 59u, 60u, 365u, 366u, 1460u, 1461u, 40000u, 70000u})
    EXPECT_EQ(DmyToDateNumber(DateNumberToDmy(n)), n) << n;
  Dmy d{17, 11, 2026};
  Dmy back = UnpackDate(PackDate(d));
  EXPECT_EQ(back.day, 17);
  EXPECT_EQ(back.month, 11);
  EXPECT_EQ(back.year, 2026);
  EXPECT_EQ(PackDate({1, 1, 1904}), (1 << 11) | (1 << 7));
}

TEST(FormatTime, PatternsAndDesignators) {
  Locale l;
  l.time_format = "h:mm:ss tt";
  EXPECT_EQ(FormatTime(0, 5, 9, l), "12:05:09AM");
  EXPECT_EQ(FormatTime(13, 5, 9, l), "1:05:09PM");
  EXPECT_EQ(FormatTime(255, 0, 0, l), "No Time");
  l.time_format = "HH:mm";
  EXPECT_EQ(FormatTime(7, 3, 0, l), "07:03");
  l.time_format = "H.mm";
  l.time_separator = ".";
  EXPECT_EQ(FormatTime(7, 3, 0, l), "7.03");
}

TEST(ParseTime, ClocksSeparatorsAndRanges) {
  int h = -1, m = -1;
  EXPECT_EQ(ParseTime("12:30 pm", 1, h, m), 0);
  EXPECT_EQ(h, 12);
  EXPECT_EQ(ParseTime("12:30 am", 1, h, m), 0);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(ParseTime("1:05 PM", 1, h, m), 0);
  EXPECT_EQ(h, 13);
  EXPECT_EQ(m, 5);
  EXPECT_EQ(ParseTime("24:00", 2, h, m), -1);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(ParseTime("7:60", 2, h, m), -1);
  EXPECT_EQ(m, 0);
  EXPECT_EQ(ParseTime("7.45", 5, h, m), 0);
  EXPECT_EQ(m, 45);
  EXPECT_EQ(ParseTime("No Time", 2, h, m), 0);
  EXPECT_EQ(h, 255);
}

TEST(FormatNumbers, DurationAndDecimal) {
  EXPECT_EQ(FormatDuration(3725), "1:02:05");
  EXPECT_EQ(FormatDecimal(3.14159, 2, false), "3.14");
  EXPECT_EQ(FormatDecimal(3.14159, 2, true), "3,14");
  EXPECT_EQ(FormatDecimal(-2.5, 0, false), "-2");  // printf's rounding to even
  EXPECT_EQ(FormatDecimal(5, 4, false), "5.0000");
}

TEST(TypedEntry, ParsesEachTypeAndRefusesNonsense) {
  DatabaseDefinition d = NewSchema().definition;
  FieldRecord items;
  FormatOptions o = test::EuropeanOptions();
  auto parse = [&](FieldType type, const char* text) {
    d.field(0).set_type(type);
    d.field(0).set_length(10);
    return ParseValue(d.field(0), items, text, o);
  };
  EXPECT_EQ(parse(kInteger, "-7"), Int32Value(-7));
  EXPECT_FALSE(parse(kInteger, "12x"));
  EXPECT_FALSE(parse(kInteger, "3000000000"));
  EXPECT_EQ(parse(kText, "ten chars!"), TextValue("ten chars!"));
  EXPECT_FALSE(parse(kText, "eleven chars"));
  EXPECT_EQ(parse(kDate, "05/03/2002"), UInt32Value(DmyToDateNumber({5, 3, 2002})));
  EXPECT_FALSE(parse(kDate, "31/02/2002"));
  EXPECT_EQ(parse(kDate, ""), UInt32Value(0));
  EXPECT_EQ(parse(kTime, "13:05"), TimeValue(13, 5, 0));
  EXPECT_FALSE(parse(kTime, "noon"));
  EXPECT_EQ(parse(kCheckBox, "1"), CheckValue(true));
  EXPECT_FALSE(parse(kCheckBox, "maybe"));
  EXPECT_EQ(parse(kFloat, "2.50"), TextValue("2.5"));
  o.decimal_comma = true;
  EXPECT_EQ(parse(kFloat, "2,5"), TextValue("2.5"));  // stored with a point whatever is shown
  items.SetItems({"Red", "Green"});
  EXPECT_EQ(parse(kPopUp, "green"), TextValue("Green"));
  EXPECT_FALSE(parse(kPopUp, "Blue"));
}

TEST(FormatValue, ShowsEachType) {
  DatabaseDefinition d = NewSchema().definition;
  FormatOptions o = test::EuropeanOptions();
  auto show = [&](FieldType type, Bytes value) {
    d.field(0).set_type(type);
    return FormatValue(d.field(0), value, o);
  };
  EXPECT_EQ(show(kInteger, Int32Value(-5)), "-5");
  EXPECT_EQ(show(kUnique, UInt32Value(4000000000u)), "4000000000");
  EXPECT_EQ(show(kDate, UInt32Value(0)), "NO DATE");
  EXPECT_EQ(show(kTime, TimeValue(255, 0, 0)), "No Time");
  EXPECT_EQ(show(kTime, Bytes{}), "No Time");
  EXPECT_EQ(show(kCheckBox, Bytes{}), "0");
  Bytes linked(24, 0);
  linked.insert(linked.end(), {'h', 'i', 0});
  EXPECT_EQ(show(kLinked, linked), "hi");
  EXPECT_EQ(show(kLinked, Bytes(10, 'x')), "");
  o.decimal_comma = true;
  EXPECT_EQ(show(kFloat, TextValue("1.25")), "1,25");
}

}  // namespace
}  // namespace qv
