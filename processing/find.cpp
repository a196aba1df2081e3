#include "processing/find.h"

#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/numeric.h"
#include "security/enciphered.h"

namespace qv {

namespace {

constexpr std::size_t kFindTextSize = 35;
constexpr std::size_t kWorkBuffer = 2000;  // the lower-case copy of Note and DB Popup values

// Lower case for Windows-1252 text: ASCII and the accented capitals of the code page.
std::string LowerCp1252(std::string_view text) {
  std::string out(text);
  for (char& ch : out) {
    auto c = static_cast<unsigned char>(ch);
    if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7))
      c += 0x20;
    else if (c == 0x8A || c == 0x8C || c == 0x8E)
      c += 0x10;
    else if (c == 0x9F)
      c = 0xFF;
    ch = static_cast<char>(c);
  }
  return out;
}

bool Compare(std::string_view text, std::string_view search, bool begins_with) {
  return begins_with ? text.substr(0, search.size()) == search
                     : text.find(search) != std::string_view::npos;
}

bool CompareText(std::string_view text, std::string_view search, bool case_sensitive,
                 bool begins_with) {
  if (case_sensitive) return Compare(text, search, begins_with);
  return Compare(LowerCp1252(text), search, begins_with);
}

bool AllDigits(std::string_view text) {
  for (char c : text)
    if (c < '0' || c > '9') return false;
  return true;
}

std::string DateSearchText(std::uint32_t days, const Locale& locale) {
  if (days == 0) return "No Date";
  Dmy d = DateNumberToDmy(days);
  return FormatDate(d.day, d.month, d.year, locale);
}

bool CalculatedMatches(ConstFieldDefinition field, std::string_view stored, std::string_view search,
                       bool begins_with, const FormatOptions& options) {
  if (stored.empty()) return false;
  long n = TextToLong(stored);
  switch (CalculatedResultKind(field)) {
    case 0:
    case 1:
    case 4:
    case 5:
    case 6:
      return Compare(stored, search, begins_with);
    case 2:
      return Compare(FormatTime(static_cast<int>(n / 3600), static_cast<int>(n / 60 % 60),
                                static_cast<int>(n % 60), options.locale),
                     search, begins_with);
    case 3:
      return Compare(DateSearchText(static_cast<std::uint32_t>(n), options.locale), search,
                     begins_with);
    default:
      return false;
  }
}

}  // namespace

FindSettings LoadFindSettings(const DatabaseDefinition& definition) {
  const std::uint8_t* d = definition.data();
  FindSettings s;
  s.field = d[def::kFindField] < kFieldSlots ? d[def::kFindField] : -1;
  s.case_sensitive = d[def::kFindCase] != 0;
  s.text = std::string(CStringAt(d + def::kFindText, kFindTextSize));
  s.begins_with = d[def::kFindOption] != 0;
  return s;
}

void StoreFindSettings(DatabaseDefinition& definition, const FindSettings& s) {
  std::uint8_t* d = definition.data();
  d[def::kFindField] =
      s.field >= 0 && s.field < kFieldSlots ? static_cast<std::uint8_t>(s.field) : 255;
  d[def::kFindCase] = s.case_sensitive ? 1 : 0;
  PutCString(d + def::kFindText, kFindTextSize, s.text);
  d[def::kFindOption] = s.begins_with ? 1 : 0;
}

bool FieldMatches(const Database& db, std::span<const std::uint8_t> record, int slot,
                  std::string_view search_text, bool case_sensitive, bool begins_with,
                  const FormatOptions& options, const FieldHidden& hidden) {
  if (slot < 0 || slot >= kFieldSlots) return false;
  if (hidden && hidden(db, slot)) return false;
  auto located = LocateValue(record, slot);
  if (!located) return false;
  auto value = record.subspan(located->offset, located->length);
  const std::string search = case_sensitive ? std::string(search_text) : LowerCp1252(search_text);
  ConstFieldDefinition field = db.definition().field(slot);
  switch (field.type()) {
    case kText:
    case kConditional:
    case kPopUp: {
      std::string_view text = ValueText(value);
      if (text.empty()) return false;
      return CompareText(text, search, case_sensitive, begins_with);
    }
    case kNote:
    case kDbPopup: {
      std::string_view text = ValueText(value);
      if (text.empty()) return false;
      if (!case_sensitive) text = text.substr(0, kWorkBuffer);
      return CompareText(text, search, case_sensitive, begins_with);
    }
    case kInteger:
    case kUnique:
      if (!AllDigits(search)) return false;
      return Compare(FormatValue(field, value, options), search, begins_with);
    case kFloat: {
      std::string_view text = ValueText(value);
      return !text.empty() && Compare(text, search, begins_with);
    }
    case kCheckBox:
      if (value.empty()) return false;
      return (value[0] == 1 && search == "1") || (value[0] == 0 && search == "0");
    case kDate:
      return Compare(DateSearchText(ValueUInt32(value), options.locale), search, begins_with);
    case kTime:
      return Compare(FormatValue(field, value, options), search, begins_with);
    case kLinked:
      if (value.size() < 25) return false;
      return CompareText(ValueText(value.subspan(24)), search, case_sensitive, begins_with);
    case kCalculated:
      return CalculatedMatches(field, ValueText(value), search, begins_with, options);
    default:
      return false;  // Not-Used, Image, Link, Heading, Relationship, External
  }
}

int FieldColumn(const DatabaseDefinition& definition, int slot) {
  int column = 0;
  for (int position = 0; position < kFieldSlots; ++position) {
    int s = definition.display_slot(position);
    if (s >= kFieldSlots) continue;
    ConstFieldDefinition f = definition.field(s);
    unsigned t = f.type();
    bool is_column = t != kNotUsed && t != kImage && t != kLink && t != kHeading &&
                     t != kExternal && f.width() != 0;
    if (s == slot) return is_column ? column : -1;
    if (is_column) ++column;
  }
  return -1;
}

std::optional<FindMatch> FindRecord(const Database& db, const FindSettings& settings, int start,
                                    int start_field, bool report, const FormatOptions& options,
                                    Prompter& prompter, const FieldHidden& hidden) {
  const std::string search = settings.case_sensitive ? settings.text : LowerCp1252(settings.text);
  if (start < 0) start = 0;
  if (start_field < 0) start_field = 0;
  for (std::uint32_t p = static_cast<std::uint32_t>(start); p < db.count(); ++p) {
    if (!RecordPassesFilter(db, p) || IsRecordEnciphered(db, p)) continue;
    std::span<const std::uint8_t> record = db.records[p].data;
    auto match = [&](int slot) {
      return FieldMatches(db, record, slot, search, settings.case_sensitive, settings.begins_with,
                          options, hidden);
    };
    int first = p == static_cast<std::uint32_t>(start) ? start_field : 0;
    int found = -1;
    if (settings.field >= 0) {
      if (match(settings.field)) found = settings.field;
    } else {
      for (int slot = first; slot < kFieldSlots && found < 0; ++slot)
        if (match(slot)) found = slot;
    }
    if (found >= 0)
      return FindMatch{static_cast<int>(p), found, FieldColumn(db.definition(), found)};
  }
  if (report) prompter.message("Not Found in Database!", "Update", Icon::Information);
  return std::nullopt;
}

std::optional<FindMatch> FindAgain(const Database& db, const FindSettings& settings,
                                   const FindMatch& last, bool report, const FormatOptions& options,
                                   Prompter& prompter, const FieldHidden& hidden) {
  int start = last.position;
  int field = last.slot + 1;
  if (settings.field >= 0 || field >= kFieldSlots) {
    ++start;
    field = 0;
  }
  return FindRecord(db, settings, start, field, report, options, prompter, hidden);
}

}  // namespace qv
