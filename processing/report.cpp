#include "processing/report.h"

#include <algorithm>
#include <cstdlib>

#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/numeric.h"
#include "processing/output_file.h"
#include "security/enciphered.h"

namespace qv {

namespace {

// The starting limits are the program's own: a field whose values all lie above 2,000,000
// reports 2,000,000 as its minimum. Kept on purpose.
constexpr long kIntegerStart = 2000000;
constexpr double kFloatStart = 2000000.0;
constexpr std::uint32_t kDateStart = 50000;
constexpr long kTimeStart = 86400;
constexpr long kSecondsPerDay = 86400;

// Integer division rounding half up: one more when twice the remainder reaches the count.
long RoundedAverage(long sum, long count) {
  if (count == 0) return 0;
  long q = sum / count;
  if (2 * (sum % count) >= count) ++q;
  return q;
}

std::string Heading(const Database& db, int slot) {
  return StringPrintf("Report for %s\r\n", db.definition().field(slot).name().c_str());
}

// The values of the passing records, in table order, as the report reads them.
template <typename Visit>
void ForEachPassingValue(const Database& db, int slot, Visit visit) {
  for (std::uint32_t p = 0; p < db.count(); ++p) {
    if (!RecordPassesFilter(db, p) || IsRecordEnciphered(db, p)) continue;
    visit(ValueBytes(db.records[p].data, slot), p);
  }
}

std::string IntegerReport(const Database& db, int slot, const FormatOptions& options) {
  long count = 0, minimum = kIntegerStart, maximum = -kIntegerStart;
  std::uint32_t sum = 0;  // 32-bit, wrapping as the original's long did
  long total_min = kIntegerStart, total_max = -kIntegerStart;
  ForEachPassingValue(db, slot, [&](std::span<const std::uint8_t>, std::uint32_t p) {
    long n = TextToLong(RecordValueText(db, p, slot, options));
    ++count;
    minimum = std::min(minimum, n);
    maximum = std::max(maximum, n);
    sum += static_cast<std::uint32_t>(n);
    long total = static_cast<std::int32_t>(sum);
    total_min = std::min(total_min, total);
    total_max = std::max(total_max, total);
  });
  long signed_sum = static_cast<std::int32_t>(sum);
  if (count == 0) minimum = maximum = 0;
  return Heading(db, slot) + StringPrintf("Number of Entries:\t%ld\r\n", count) +
         StringPrintf("Minimum Value:\t%ld\r\n", minimum) +
         StringPrintf("Maximum Value:\t%ld\r\n", maximum) +
         StringPrintf("Sum:\t\t%ld\r\n", signed_sum) +
         StringPrintf("Minimum Total:\t%ld\r\n", total_min) +
         StringPrintf("Maximum Total:\t%ld\r\n", total_max) +
         StringPrintf("Average:\t\t%ld\r\n", RoundedAverage(signed_sum, count));
}

std::string FloatReport(const Database& db, int slot, const FormatOptions& options) {
  const int decimals = ReportDecimals(db.definition().field(slot));
  double count = 0.0, sum = 0.0, minimum = kFloatStart, maximum = -kFloatStart;
  double total_min = kFloatStart, total_max = -kFloatStart;
  ForEachPassingValue(db, slot, [&](std::span<const std::uint8_t> value, std::uint32_t) {
    // Stored decimal texts always use "."; the decimal comma is only for showing them.
    double x = TextToDouble(ValueText(value));
    count += 1.0;
    sum += x;
    minimum = std::min(minimum, x);
    maximum = std::max(maximum, x);
    total_min = std::min(total_min, sum);
    total_max = std::max(total_max, sum);
  });
  double average = count > 0 ? sum / count : 0.0;
  if (count == 0) minimum = maximum = 0.0;
  auto text = [&](double v, int d) { return FormatDecimal(v, d, options.decimal_comma); };
  return Heading(db, slot) + StringPrintf("Number of Entries:\t%s\r\n", text(count, 0).c_str()) +
         StringPrintf("Minimum Value:\t%s\r\n", text(minimum, decimals).c_str()) +
         StringPrintf("Maximum Value:\t%s\r\n", text(maximum, decimals).c_str()) +
         StringPrintf("Sum:\t\t%s\r\n", text(sum, decimals).c_str()) +
         StringPrintf("Minimum Total:\t%s\r\n", text(total_min, decimals).c_str()) +
         StringPrintf("Maximum Total:\t%s\r\n", text(total_max, decimals).c_str()) +
         StringPrintf("Average:\t\t%s\r\n", text(average, decimals).c_str());
}

std::string Percentage(double value, bool decimal_comma) {
  std::string text = StringPrintf("%5.2f", value);
  if (decimal_comma) std::replace(text.begin(), text.end(), '.', ',');
  return text;
}

std::string CheckReport(const Database& db, int slot, const FormatOptions& options) {
  int records = 0, checked = 0;
  ForEachPassingValue(db, slot, [&](std::span<const std::uint8_t>, std::uint32_t p) {
    ++records;
    if (TextToLong(RecordValueText(db, p, slot, options)) != 0) ++checked;
  });
  double percent = records > 0 ? 100.0 * checked / records : 0.0;
  return Heading(db, slot) + StringPrintf("Number of Entries:\t\t%d\r\n", records) +
         StringPrintf("Items Checked:\t\t%d\r\n", checked) +
         StringPrintf("Items Not-Checked:\t\t%d\r\n", records - checked) +
         "Percentage Checked:\t\t" + Percentage(percent, options.decimal_comma) + "\r\n" +
         "Percentage Not-Checked:\t" + Percentage(100.0 - percent, options.decimal_comma) + "\r\n";
}

std::string DateText(std::uint32_t day_number, const Locale& locale) {
  Dmy d = DateNumberToDmy(day_number);
  return FormatDate(d.day, d.month, d.year, locale);
}

std::string DateReport(const Database& db, int slot, const FormatOptions& options) {
  const bool calculated = db.definition().field(slot).type() == kCalculated;
  long count = 0;
  std::uint32_t minimum = kDateStart, maximum = 0;
  bool dated = false;
  ForEachPassingValue(db, slot, [&](std::span<const std::uint8_t> value, std::uint32_t) {
    long n = calculated ? TextToLong(ValueText(value)) : ValueUInt32(value);
    ++count;  // empty dates count as entries but take no part in the limits
    if (n <= 0 || n > 0xFFFFFFF) return;
    dated = true;
    minimum = std::min(minimum, static_cast<std::uint32_t>(n));
    maximum = std::max(maximum, static_cast<std::uint32_t>(n));
  });
  // Without a single date the limits show as the empty date rather than the starting values.
  if (!dated) minimum = maximum = 0;
  return Heading(db, slot) + StringPrintf("Number of Entries:\t%ld\r\n", count) +
         StringPrintf("Minimum Value:\t%s\r\n", DateText(minimum, options.locale).c_str()) +
         StringPrintf("Maximum Value:\t%s\r\n", DateText(maximum, options.locale).c_str()) +
         StringPrintf("Days Spanned:\t%ld\r\n",
                      static_cast<long>(maximum) - static_cast<long>(minimum));
}

std::string TimeText(long seconds, const Locale& locale) {
  return FormatTime(static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                    static_cast<int>(seconds % 60), locale);
}

std::string TimeReport(const Database& db, int slot, const FormatOptions& options) {
  const bool calculated = db.definition().field(slot).type() == kCalculated;
  long count = 0, minimum = kTimeStart, maximum = 0, sum = 0;
  ForEachPassingValue(db, slot, [&](std::span<const std::uint8_t> value, std::uint32_t) {
    long seconds = 0;
    if (calculated) {
      seconds = TextToLong(ValueText(value));
    } else {
      // A record without a time is no entry: counting it as 255 hours would spoil every line.
      if (value.size() < 3 || value[2] == 255) return;
      seconds = (value[2] * 60L + value[1]) * 60L;  // whole minutes, as typed times are read
    }
    ++count;
    minimum = std::min(minimum, seconds);
    maximum = std::max(maximum, seconds);
    sum += seconds;
  });
  if (count == 0) minimum = maximum = 0;
  std::string text =
      Heading(db, slot) + StringPrintf("Number of Entries:\t%ld\r\n", count) +
      StringPrintf("Minimum Value:\t%s\r\n", TimeText(minimum, options.locale).c_str()) +
      StringPrintf("Maximum Value:\t%s\r\n", TimeText(maximum, options.locale).c_str()) +
      StringPrintf("Average Time:\t%s\r\n",
                   TimeText(RoundedAverage(sum, count), options.locale).c_str());
  if (sum >= kSecondsPerDay) {
    // No colon after "Total Time" here, unlike the line below; the program's own text.
    text += StringPrintf("Total Time\t%ld Day(s), ", sum / kSecondsPerDay);
    text += StringPrintf("%s\r\n", TimeText(sum % kSecondsPerDay, options.locale).c_str());
  } else {
    text += StringPrintf("Total Time:\t%s\r\n", TimeText(sum, options.locale).c_str());
  }
  return text;
}

}  // namespace

ReportKind ReportKindOf(ConstFieldDefinition field) {
  switch (field.type()) {
    case kInteger:
      return ReportKind::Integer;
    case kFloat:
      return ReportKind::Float;
    case kCheckBox:
      return ReportKind::Check;
    case kDate:
      return ReportKind::Date;
    case kTime:
      return ReportKind::Time;
    case kCalculated:
      switch (CalculatedResultKind(field)) {
        case 1:
          return ReportKind::Integer;
        case 2:
          return ReportKind::Time;
        case 3:
          return ReportKind::Date;
        case 0:
        case 4:
        case 5:
        case 6:
          return ReportKind::Float;
        default:
          return ReportKind::None;
      }
    default:
      return ReportKind::None;
  }
}

int ReportDecimals(ConstFieldDefinition field) {
  if (field.type() == kCalculated) return ResultKindDecimals(CalculatedResultKind(field));
  int decimals = FloatDecimals(field);
  return decimals > 0 ? decimals : 4;
}

std::optional<std::string> RunReport(const Database& db, int slot, const FormatOptions& options,
                                     Prompter& prompter) {
  if (slot < 0 || slot >= kFieldSlots) {
    prompter.message("You must first select a field to run the report on!", "ERROR",
                     Icon::Exclamation);
    return std::nullopt;
  }
  switch (ReportKindOf(db.definition().field(slot))) {
    case ReportKind::Integer:
      return IntegerReport(db, slot, options);
    case ReportKind::Float:
      return FloatReport(db, slot, options);
    case ReportKind::Check:
      return CheckReport(db, slot, options);
    case ReportKind::Date:
      return DateReport(db, slot, options);
    case ReportKind::Time:
      return TimeReport(db, slot, options);
    case ReportKind::None:
      break;
  }
  prompter.message(
      "Can only run reports on the following field types:\nInteger, Float, Checkbox, Time, Date, "
      "and Calculated.",
      "ERROR", Icon::Exclamation);
  return std::nullopt;
}

bool SaveReportText(std::string_view text, const std::string& path) {
  OutputFile file(path);
  if (!file.ok()) return false;
  while (!text.empty()) {
    std::size_t end = text.find("\r\n");
    std::string_view line = text.substr(0, end);
    file.Write(line);
    file.Write("\n");
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 2);
  }
  return file.Close();
}

}  // namespace qv
