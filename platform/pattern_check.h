#pragma once
// Checks of date and time patterns a user gives (Windows-style letters, as the formatter reads
// them), so a pattern the formatter would silently drop parts of is refused with an example.

#include <string>
#include <string_view>

namespace qv {

// Empty when the short date pattern is three of d/dd, M/MM, yy/yyyy (each once, any case)
// split by one separator; otherwise why not, with an example.
std::string DatePatternProblem(std::string_view pattern);
// Empty when the time pattern is an hour (h, hh, H or HH), mm and optionally ss split by one
// separator, with tt at the end for a 12-hour clock (it then needs ss, as the formatter reads
// "mm tt" as no minutes); otherwise why not, with an example.
std::string TimePatternProblem(std::string_view pattern);

}  // namespace qv
