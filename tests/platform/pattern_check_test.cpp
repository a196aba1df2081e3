#include "platform/pattern_check.h"

#include <gtest/gtest.h>

namespace qv::test {
namespace {

TEST(PatternCheckTest, DatePatternsNeedADayAMonthAndAYearWithOneSeparator) {
  for (const char* good : {"dd/MM/yyyy", "M/d/yyyy", "yyyy-MM-dd", "d.M.yy", "dd/MMM/yyyy"})
    EXPECT_EQ(DatePatternProblem(good), "") << good;
  for (const char* bad : {"%d.%m.%Y", "dd/MM", "ddMMyyyy", "dd MM yyyy", "dd/dd/yyyy",
                          "dd/MM/yyyy/", "dd/MMMM/yyyy", ""})
    EXPECT_NE(DatePatternProblem(bad), "") << bad;
  EXPECT_EQ(DatePatternProblem("%d.%m.%Y"),
            "the date pattern '%d.%m.%Y' is not understood: use d or dd, M or MM and yy or yyyy "
            "with one separator, for example dd.MM.yyyy");
}

TEST(PatternCheckTest, TimePatternsNeedAnHourAndMinutesAndTtAtTheEnd) {
  for (const char* good : {"HH:mm:ss", "h:mm:ss tt", "H.mm", "hh:mm:sstt", "HH:mm"})
    EXPECT_EQ(TimePatternProblem(good), "") << good;
  // "h:mm tt" would show no minutes: the formatter reads "mm tt" as no token it knows.
  for (const char* bad :
       {"%H:%M", "h:mm tt", "tt h:mm:ss", "HH", "mm:HH", "HH:mm:ss:ff", "HH mm ss", "HH:mm:s"})
    EXPECT_NE(TimePatternProblem(bad), "") << bad;
  EXPECT_NE(TimePatternProblem("%H.%M").find("for example HH.mm.ss or h.mm.ss tt"),
            std::string::npos);
}

}  // namespace
}  // namespace qv::test
