#pragma once
// The regional items the value formatter reads, with Windows-style patterns ("dd/MM/yyyy",
// "h:mm:ss tt"), so the formatting rules work on them exactly as on the handheld.

#include <string>

namespace qv {

struct Locale {
  std::string date_separator = "/";
  std::string short_date = "M/d/yyyy";
  std::string time_separator = ":";
  std::string time_format = "h:mm:ss tt";
  std::string am = "AM";
  std::string pm = "PM";
};

// How values are shown and typed: the locale plus the two application settings that steer
// formatting (the time preference code for typed times, the decimal comma for numbers).
struct FormatOptions {
  Locale locale;
  int time_code = 1;  // 1, 2: ":" (1 is a 12-hour clock, as the default pattern); 4, 5: "."; 8: ","
  bool decimal_comma = false;
};

}  // namespace qv
