#include "engine/format.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "engine/record.h"
#include "engine/text.h"

namespace qv {

namespace {

constexpr int kMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool IsLeap(long year) { return year % 4 == 0; }  // no century exception, on purpose

int MonthLength(int month, long year) {
  return month == 2 && IsLeap(year) ? 29 : kMonthDays[month - 1];
}

// Splits at every occurrence of `sep`, keeping at most `limit` bytes of each token.
std::vector<std::string> SplitTokens(std::string_view text, char sep, std::size_t limit) {
  std::vector<std::string> tokens;
  std::size_t start = 0;
  while (true) {
    std::size_t end = text.find(sep, start);
    std::string_view token = text.substr(start, end == std::string_view::npos ? end : end - start);
    tokens.emplace_back(token.substr(0, limit));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return tokens;
}

}  // namespace

Dmy DateNumberToDmy(std::uint32_t days) {
  long year = 1904 + 4L * (days / 1461);
  long rest = days % 1461;
  while (rest >= (IsLeap(year) ? 366 : 365)) {
    rest -= IsLeap(year) ? 366 : 365;
    ++year;
  }
  int month = 1;
  while (rest >= MonthLength(month, year)) {
    rest -= MonthLength(month, year);
    ++month;
  }
  return Dmy{static_cast<int>(rest) + 1, month, static_cast<int>(year)};
}

std::uint32_t DmyToDateNumber(const Dmy& date) {
  if (date.year < 1904 || date.month < 1 || date.month > 12 || date.day < 1) return 0;
  long days = 0;
  long years = date.year - 1904;
  days += 1461L * (years / 4);
  for (long y = 1904 + 4 * (years / 4); y < date.year; ++y) days += IsLeap(y) ? 366 : 365;
  for (int m = 1; m < date.month; ++m) days += MonthLength(m, date.year);
  days += date.day - 1;
  return static_cast<std::uint32_t>(days);
}

std::uint16_t PackDate(const Dmy& date) {
  return static_cast<std::uint16_t>(((date.year - 1904) & 0x7F) | ((date.month & 0x0F) << 7) |
                                    ((date.day & 0x1F) << 11));
}

Dmy UnpackDate(std::uint16_t packed) {
  return Dmy{packed >> 11, (packed >> 7) & 0x0F, 1904 + (packed & 0x7F)};
}

std::string FormatDate(int day, int month, int year, const Locale& locale) {
  if (year < 1904) year = 1904;
  if (month <= 1 && day <= 1 && year <= 1904) return "NO DATE";
  char sep = locale.date_separator.empty() ? '/' : locale.date_separator[0];
  std::vector<std::string> tokens = SplitTokens(locale.short_date, sep, 10);
  tokens.resize(3);
  std::string out;
  for (int i = 0; i < 3; ++i) {
    if (i > 0) out += locale.date_separator;
    const std::string t = ToLowerAscii(tokens[i]);
    if (t == "m") out += StringPrintf("%d", month);
    else if (t == "mm" || t == "mmm") out += StringPrintf("%02d", month);  // names show as numbers, on purpose
    else if (t == "d") out += StringPrintf("%d", day);
    else if (t == "dd") out += StringPrintf("%02d", day);
    else if (t == "yy") out += StringPrintf("%02d", year % 100);
    else if (t == "yyyy") out += StringPrintf("%04d", year);
  }
  return out;
}

std::string FormatTime(int hours, int minutes, int seconds, const Locale& locale) {
  if (hours == 255) return "No Time";
  bool twelve = locale.time_format.find("tt") != std::string::npos;
  char sep = locale.time_separator.empty() ? ':' : locale.time_separator[0];
  int hour12 = hours == 0 ? 12 : (hours > 12 ? hours - 12 : hours);
  std::string out;
  bool first = true;
  for (const std::string& token : SplitTokens(locale.time_format, sep, 64)) {
    if (!first) out += locale.time_separator;
    first = false;
    if (token == "h") out += StringPrintf("%d", hour12);
    else if (token == "hh") out += StringPrintf("%02d", hour12);
    else if (token == "H") out += StringPrintf("%d", hours);
    else if (token == "HH") out += StringPrintf("%02d", hours);
    else if (ToLowerAscii(token) == "mm") out += StringPrintf("%02d", minutes);
    else if (token.find("ss") != std::string::npos) out += StringPrintf("%02d", seconds);
  }
  if (twelve) out += hours < 12 ? locale.am : locale.pm;
  return out;
}

int ParseTime(std::string_view text, int time_code, int& hours, int& minutes) {
  if (text.find("No Time") != std::string_view::npos) {
    hours = 255;
    minutes = 0;
    return 0;
  }
  char sep = ':';
  if (time_code == 4 || time_code == 5) sep = '.';
  else if (time_code == 8) sep = ',';
  std::vector<std::string> pieces = SplitTokens(text, sep, 64);
  hours = std::atoi(pieces[0].c_str());
  minutes = pieces.size() > 1 ? std::atoi(pieces[1].c_str()) : 0;
  if (time_code == 1 || time_code == 4) {
    if (hours >= 12) hours = 0;
    if (text.find("pm") != std::string_view::npos || text.find("PM") != std::string_view::npos)
      hours += 12;
  }
  if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) {
    hours = 0;
    minutes = 0;
    return -1;
  }
  return 0;
}

std::string FormatDuration(long seconds) {
  return StringPrintf("%d:%02d:%02d", static_cast<int>(seconds / 3600),
                      static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
}

std::string FormatDecimal(double value, int decimals, bool decimal_comma) {
  decimals = std::clamp(decimals, 0, 20);
  // The original's "%12.*f" with its padding taken off again; to_chars writes the same digits
  // (it is defined as printf's conversion in the C locale) without printf's cost.
  char digits[400];  // DBL_MAX with 20 decimals fits
  auto [end, ec] =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
  std::string out =
      ec == std::errc() ? std::string(digits, end) : StringPrintf("%.*f", decimals, value);
  if (decimal_comma) std::replace(out.begin(), out.end(), '.', ',');
  return out;
}

namespace {

// A check box's typed text: 1, yes, true or x; 0, no, false or nothing.
bool ParseCheck(std::string_view text, bool& checked) {
  for (std::string_view word : {"1", "yes", "true", "x"})
    if (EqualsNoCase(text, word)) return checked = true;
  checked = false;
  if (text.empty()) return true;
  for (std::string_view word : {"0", "no", "false"})
    if (EqualsNoCase(text, word)) return true;
  return false;
}

// printf's "%.15g", which to_chars writes by definition, without printf's cost.
std::string General15(double value) {
  char digits[64];
  auto [end, ec] =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 15);
  return ec == std::errc() ? std::string(digits, end) : StringPrintf("%.15g", value);
}

}  // namespace

std::optional<Dmy> ParseDate(std::string_view text, const Locale& locale) {
  std::size_t first = text.find_first_not_of(' ');
  text = first == std::string_view::npos ? std::string_view() : text.substr(first);
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  if (text.empty() || EqualsNoCase(text, "NO DATE")) return Dmy{};
  char sep = locale.date_separator.empty() ? '/' : locale.date_separator[0];
  // What each of the pattern's three tokens holds, by its first letter.
  char order[3] = {'m', 'd', 'y'};
  char letters[3] = {' ', ' ', ' '};
  int tokens = 1;
  bool token_start = true;
  for (char c : locale.short_date) {
    if (c == sep) {
      ++tokens;
      token_start = true;
      continue;
    }
    if (token_start && tokens <= 3) letters[tokens - 1] = LowerAscii(c);
    token_start = false;
  }
  if (tokens == 3) std::copy(letters, letters + 3, order);
  // Three numbers; any of / . - separates them as well as the locale's separator.
  int numbers[3] = {0, 0, 0};
  int digits[3] = {0, 0, 0};
  int part = 0;
  for (char c : text) {
    if (c == sep || c == '/' || c == '.' || c == '-') {
      if (++part > 2) return std::nullopt;
    } else if (c >= '0' && c <= '9') {
      if (++digits[part] > 6) return std::nullopt;
      numbers[part] = numbers[part] * 10 + (c - '0');
    } else if (c != ' ') {
      return std::nullopt;
    }
  }
  if (part != 2) return std::nullopt;
  Dmy date{0, 0, 0};
  for (int i = 0; i < 3; ++i) {
    if (digits[i] == 0) return std::nullopt;
    int n = numbers[i];
    if (order[i] == 'd') date.day = n;
    else if (order[i] == 'm') date.month = n;
    else if (order[i] == 'y') date.year = digits[i] <= 2 ? (n < 50 ? 2000 + n : 1900 + n) : n;
    else return std::nullopt;
  }
  if (date.year < 1904 || date.year > 9999 || date.month < 1 || date.month > 12 ||
      date.day < 1 || date.day > MonthLength(date.month, date.year))
    return std::nullopt;
  return date;
}

int FloatDecimals(ConstFieldDefinition field) {
  int d = field.settings()[0];
  return d > 10 ? 10 : d;
}

namespace {

std::string WithDecimalComma(std::string_view text, bool decimal_comma) {
  std::string out(text);
  if (decimal_comma) std::replace(out.begin(), out.end(), '.', ',');
  return out;
}

// Whether text is a plain decimal: an optional '-', digits, at most one '.' between digits. Such
// text reads the same with from_chars as with the C library (both round correctly), faster.
bool PlainDecimal(std::string_view text, bool point_allowed) {
  const std::size_t first = !text.empty() && text[0] == '-' ? 1 : 0;
  if (first == text.size() || text.size() > 30) return false;
  bool point = false;
  for (std::size_t i = first; i < text.size(); ++i) {
    if (text[i] >= '0' && text[i] <= '9') continue;
    if (text[i] != '.' || !point_allowed || point || i == first || i + 1 == text.size())
      return false;
    point = true;
  }
  return true;
}

std::optional<double> ParseNumber(std::string_view text, bool decimal_comma) {
  if (!decimal_comma && PlainDecimal(text, true)) {
    double v = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec == std::errc() && end == text.data() + text.size() && std::isfinite(v)) return v;
  }
  std::string s(text);
  if (decimal_comma) std::replace(s.begin(), s.end(), ',', '.');
  s.erase(0, s.find_first_not_of(' '));
  s.erase(s.find_last_not_of(' ') + 1);
  if (s.empty()) return std::nullopt;
  char* end = nullptr;
  errno = 0;
  double v = std::strtod(s.c_str(), &end);
  if (*end != '\0' || errno == ERANGE || !std::isfinite(v)) return std::nullopt;
  return v;
}

std::optional<long long> ParseWhole(std::string_view text) {
  if (PlainDecimal(text, false)) {
    long long v = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    if (ec == std::errc() && end == text.data() + text.size()) return v;
  }
  std::string s(text);
  s.erase(0, s.find_first_not_of(' '));
  s.erase(s.find_last_not_of(' ') + 1);
  if (s.empty()) return std::nullopt;
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(s.c_str(), &end, 10);
  if (*end != '\0' || errno == ERANGE) return std::nullopt;
  return v;
}

std::optional<Bytes> BoundedText(std::string_view text, std::size_t largest) {
  if (text.size() + 1 > largest) return std::nullopt;
  return TextValue(text);
}

}  // namespace

std::string FormatValue(ConstFieldDefinition field, std::span<const std::uint8_t> value,
                        const FormatOptions& options) {
  switch (field.type()) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kPopUp:
    case kExternal: return std::string(ValueText(value));
    case kFloat:
    case kCalculated: return WithDecimalComma(ValueText(value), options.decimal_comma);
    case kInteger: return StringPrintf("%ld", static_cast<long>(ValueInt32(value)));
    case kUnique:
    case kLink: return StringPrintf("%lu", static_cast<unsigned long>(ValueUInt32(value)));
    case kCheckBox: return !value.empty() && value[0] ? "1" : "0";
    case kDate: {
      Dmy d = DateNumberToDmy(ValueUInt32(value));
      return FormatDate(d.day, d.month, d.year, options.locale);
    }
    case kTime:
      if (value.size() < 3) return "No Time";
      return FormatTime(value[2], value[1], value[0], options.locale);
    case kLinked:
      return value.size() >= 25 ? std::string(ValueText(value.subspan(24))) : std::string();
    default: return std::string();
  }
}

std::optional<Bytes> ParseValue(ConstFieldDefinition field, const FieldRecord& items,
                                std::string_view text, const FormatOptions& options) {
  switch (field.type()) {
    case kText:
    case kDbPopup:
    case kNote:
    case kExternal: return BoundedText(text, std::max<std::size_t>(LargestValueSize(field), 1));
    case kInteger: {
      auto v = ParseWhole(text);
      if (!v || *v < INT32_MIN || *v > INT32_MAX) return std::nullopt;
      return Int32Value(static_cast<std::int32_t>(*v));
    }
    case kUnique:
    case kLink: {
      auto v = ParseWhole(text);
      if (!v || *v < 0 || *v > UINT32_MAX) return std::nullopt;
      return UInt32Value(static_cast<std::uint32_t>(*v));
    }
    case kFloat: {
      if (text.empty()) return TextValue("");
      auto v = ParseNumber(text, options.decimal_comma);
      if (!v) return std::nullopt;
      int decimals = FloatDecimals(field);
      std::string stored = decimals > 0 ? FormatDecimal(*v, decimals, false) : General15(*v);
      return BoundedText(stored, 17);
    }
    case kPopUp: {
      if (text.empty()) return TextValue("");
      for (std::size_t i = 0; i < items.texts.size(); ++i)
        if (EqualsNoCase(items.texts[i], text)) return BoundedText(items.texts[i].substr(0, 13), 14);
      if (!items.texts.empty()) return std::nullopt;
      return BoundedText(text, 14);
    }
    case kCheckBox: {
      bool checked = false;
      if (!ParseCheck(text, checked)) return std::nullopt;
      return CheckValue(checked);
    }
    case kDate: {
      auto d = ParseDate(text, options.locale);
      if (!d) return std::nullopt;
      return UInt32Value(DmyToDateNumber(*d));
    }
    case kTime: {
      if (text.empty()) return TimeValue(255, 0, 0);
      std::size_t first = text.find_first_not_of(' ');
      if (text.find("No Time") == std::string_view::npos &&
          (first == std::string_view::npos || text[first] < '0' || text[first] > '9'))
        return std::nullopt;
      int h = 0, m = 0;
      if (ParseTime(text, options.time_code, h, m) != 0) return std::nullopt;
      return TimeValue(h, m, 0);
    }
    default: return std::nullopt;
  }
}

namespace {

void PutText(Bytes& out, std::string_view text) {
  out.assign(text.begin(), text.end());
  out.push_back(0);
}

void PutUInt32(Bytes& out, std::uint32_t v) {
  out.resize(4);
  PutLE32(out.data(), v);
}

}  // namespace

bool ParseValueInto(ConstFieldDefinition field, const FieldRecord& items, std::string_view text,
                    const FormatOptions& options, Bytes& out) {
  switch (field.type()) {
    case kText:
    case kDbPopup:
    case kNote:
    case kExternal:
      if (text.size() + 1 > std::max<std::size_t>(LargestValueSize(field), 1)) return false;
      PutText(out, text);
      return true;
    case kInteger: {
      auto v = ParseWhole(text);
      if (!v || *v < INT32_MIN || *v > INT32_MAX) return false;
      PutUInt32(out, static_cast<std::uint32_t>(static_cast<std::int32_t>(*v)));
      return true;
    }
    case kUnique:
    case kLink: {
      auto v = ParseWhole(text);
      if (!v || *v < 0 || *v > UINT32_MAX) return false;
      PutUInt32(out, static_cast<std::uint32_t>(*v));
      return true;
    }
    case kFloat: {
      if (text.empty()) {
        PutText(out, "");
        return true;
      }
      auto v = ParseNumber(text, options.decimal_comma);
      if (!v) return false;
      int decimals = FloatDecimals(field);
      std::string stored = decimals > 0 ? FormatDecimal(*v, decimals, false) : General15(*v);
      if (stored.size() + 1 > 17) return false;
      PutText(out, stored);
      return true;
    }
    case kCheckBox: {
      bool checked = false;
      if (!ParseCheck(text, checked)) return false;
      out.assign(1, checked ? 1 : 0);
      return true;
    }
    default: {  // the rarer types build their value whole
      auto value = ParseValue(field, items, text, options);
      if (!value) return false;
      out = std::move(*value);
      return true;
    }
  }
}

}  // namespace qv
