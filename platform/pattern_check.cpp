#include "platform/pattern_check.h"

#include <vector>

namespace qv {

namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return out;
}

// The separator the formatter will split at: the first character that is not a letter.
char SeparatorOf(std::string_view pattern) {
  for (char c : pattern)
    if (!IsLetter(c)) return c;
  return 0;
}

std::vector<std::string_view> Split(std::string_view text, char sep) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find(sep, start)) != std::string_view::npos; start = end + 1)
    parts.push_back(text.substr(start, end - start));
  parts.push_back(text.substr(start));
  return parts;
}

// A separator for the example: one the user wrote, if it is a usual one.
char ExampleSeparator(std::string_view pattern, std::string_view usual) {
  for (char c : pattern)
    if (usual.find(c) != std::string_view::npos) return c;
  return usual[0];
}

}  // namespace

std::string DatePatternProblem(std::string_view pattern) {
  const char sep = SeparatorOf(pattern);
  bool ok = sep != 0 && sep != ' ';
  int day = 0, month = 0, year = 0;
  if (ok) {
    std::vector<std::string_view> tokens = Split(pattern, sep);
    ok = tokens.size() == 3;
    for (std::string_view token : tokens) {
      const std::string t = Lower(token);
      day += t == "d" || t == "dd";
      month += t == "m" || t == "mm" || t == "mmm";  // a month name shows as its number
      year += t == "yy" || t == "yyyy";
    }
  }
  if (ok && day == 1 && month == 1 && year == 1) return {};
  const std::string s(1, ExampleSeparator(pattern, "/.-"));
  return "the date pattern '" + std::string(pattern) +
         "' is not understood: use d or dd, M or MM and yy or yyyy with one separator, for "
         "example dd" +
         s + "MM" + s + "yyyy";
}

std::string TimePatternProblem(std::string_view pattern) {
  std::string_view body = pattern;
  const bool twelve = body.size() >= 2 && body.substr(body.size() - 2) == "tt";
  if (twelve) body.remove_suffix(2);
  while (!body.empty() && body.back() == ' ') body.remove_suffix(1);
  const char sep = SeparatorOf(body);
  bool ok = sep != 0 && sep != ' ' && body.find('t') == std::string_view::npos;
  if (ok) {
    std::vector<std::string_view> tokens = Split(body, sep);
    ok = (tokens.size() == 3 || (tokens.size() == 2 && !twelve)) &&
         (tokens[0] == "h" || tokens[0] == "hh" || tokens[0] == "H" || tokens[0] == "HH") &&
         Lower(tokens[1]) == "mm" && (tokens.size() == 2 || tokens[2] == "ss");
  }
  if (ok) return {};
  const std::string s(1, ExampleSeparator(pattern, ":."));
  return "the time pattern '" + std::string(pattern) +
         "' is not understood: use h or hh (12-hour) or H or HH (24-hour), mm and ss with one "
         "separator, and tt at the end for AM and PM, for example HH" +
         s + "mm" + s + "ss or h" + s + "mm" + s + "ss tt";
}

}  // namespace qv
