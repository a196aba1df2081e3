#pragma once
// Values as the user sees them: dates, times, durations and decimals in the regional format,
// typed times and dates read back, and the date-number calendar (days since 1904-01-01, every
// fourth year a leap year, no century exception).

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/bytes.h"
#include "engine/schema.h"
#include "platform/locale.h"

namespace qv {

struct Dmy {
  int day = 1;
  int month = 1;
  int year = 1904;
};

Dmy DateNumberToDmy(std::uint32_t days);
// The inverse; dates before 1904-01-01 give 0 (the empty date).
std::uint32_t DmyToDateNumber(const Dmy& date);
// Bits 0-6 year - 1904, bits 7-10 month, bits 11-15 day.
std::uint16_t PackDate(const Dmy& date);
Dmy UnpackDate(std::uint16_t packed);

// "NO DATE" for 1 January 1904 (and anything before it), else the short date pattern.
std::string FormatDate(int day, int month, int year, const Locale& locale);
// "No Time" for an hour of 255, else the time pattern.
std::string FormatTime(int hours, int minutes, int seconds, const Locale& locale);
// 0 and the hour and minutes on success, -1 (both 0) on failure. "No Time" gives hour 255.
int ParseTime(std::string_view text, int time_code, int& hours, int& minutes);
// "%d:%02d:%02d".
std::string FormatDuration(long seconds);
// "%12.Nf" without the leading blanks; "," for "." with the decimal comma.
std::string FormatDecimal(double value, int decimals, bool decimal_comma);

// Reads a date typed in the short date pattern; "NO DATE" or empty text gives the empty date.
std::optional<Dmy> ParseDate(std::string_view text, const Locale& locale);

// The display text of one value of a field (Integers with "%ld", dates and times by the locale,
// check boxes "0"/"1", texts as stored). Image, Link, Heading and Relationship show nothing.
std::string FormatValue(ConstFieldDefinition field, std::span<const std::uint8_t> value,
                        const FormatOptions& options);

// Parses typed text into a value of the field, as the record editor takes it; nothing when the
// text is not a valid value. `items` is the field's pop-up list.
std::optional<Bytes> ParseValue(ConstFieldDefinition field, const FieldRecord& items,
                                std::string_view text, const FormatOptions& options);
// The same into `out`, whose storage is reused (an import parses many values); false, with
// `out` unspecified, when the text is not a valid value.
bool ParseValueInto(ConstFieldDefinition field, const FieldRecord& items, std::string_view text,
                    const FormatOptions& options, Bytes& out);

// The decimals a Float field shows (settings byte 0; 0 means as typed, shown with up to 4).
int FloatDecimals(ConstFieldDefinition field);

}  // namespace qv
