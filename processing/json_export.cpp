#include "processing/json_export.h"

#include <algorithm>
#include <cstdlib>

#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/numeric.h"
#include "processing/output_file.h"
#include "security/enciphered.h"

namespace qv {

std::string JsonQuote(std::string_view utf8) {
  std::string out = "\"";
  for (char ch : utf8) {
    auto c = static_cast<unsigned char>(ch);
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20)
          out += StringPrintf("\\u%04x", c);
        else
          out += ch;
    }
  }
  return out + "\"";
}

namespace {

// A stored decimal text ("12.50", "-3", " 7.2") as a JSON number; nothing when it is none.
std::optional<std::string> JsonNumber(std::string_view text) {
  std::string t(text);
  while (!t.empty() && t.front() == ' ') t.erase(t.begin());
  while (!t.empty() && t.back() == ' ') t.pop_back();
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  double v = std::strtod(t.c_str(), &end);
  if (*end != '\0' || t.find_first_of("xXnN") != std::string::npos) return std::nullopt;
  return StringPrintf("%.15g", v);
}

std::string IsoDate(std::uint32_t days) {
  if (days == 0) return "null";
  Dmy d = DateNumberToDmy(days);
  return StringPrintf("\"%04d-%02d-%02d\"", d.year, d.month, d.day);
}

// A Calculated result: a number, or for the time and date kinds a duration "H:MM:SS" and a date.
std::string CalculatedJson(ConstFieldDefinition field, std::string_view stored) {
  auto n = JsonNumber(stored);
  if (!n) return stored.empty() ? "null" : JsonQuote(Cp1252ToUtf8(std::string(stored)));
  switch (CalculatedResultKind(field)) {
    case 2:
      return JsonQuote(FormatDuration(TextToLong(stored)));
    case 3:
      return IsoDate(static_cast<std::uint32_t>(std::max(0, TextToLong(stored))));
    default:
      return *n;
  }
}

std::string TextOrNull(std::string_view stored) {
  return stored.empty() ? "null" : JsonQuote(Cp1252ToUtf8(std::string(stored)));
}

}  // namespace

std::string TypedJsonValue(const Database& db, std::uint32_t number, int slot,
                           const FormatOptions& options) {
  if (number >= db.count() || db.records[number].data.empty()) return "null";
  ConstFieldDefinition field = db.definition().field(slot);
  auto value = ValueBytes(db.records[number].data, slot);
  switch (field.type()) {
    case kInteger:
      return value.size() < 4 ? "null" : StringPrintf("%ld", static_cast<long>(ValueInt32(value)));
    case kUnique:
      return value.size() < 4 ? "null"
                              : StringPrintf("%lu", static_cast<unsigned long>(ValueUInt32(value)));
    case kFloat: {
      auto n = JsonNumber(ValueText(value));
      return n ? *n : TextOrNull(ValueText(value));
    }
    case kCalculated:
      return CalculatedJson(field, ValueText(value));
    case kCheckBox:
      return !value.empty() && value[0] ? "true" : "false";
    case kDate:
      return IsoDate(ValueUInt32(value));
    case kTime:
      if (value.size() < 3 || value[2] > 23) return "null";
      return StringPrintf("\"%02d:%02d:%02d\"", value[2], value[1], value[0]);
    default:
      return TextOrNull(FormatValue(field, value, options));
  }
}

std::string RecordsAsJson(const Database& db, const std::vector<std::uint32_t>& records,
                          const std::vector<int>& slots, const JsonOptions& json,
                          const FormatOptions& options) {
  std::vector<std::string> keys;
  for (int slot : slots)
    keys.push_back(JsonQuote(Cp1252ToUtf8(db.definition().field(slot).name())));
  std::string out = json.lines ? "" : "[";
  bool first = true;
  for (std::uint32_t p : records) {
    if (p >= db.count() || db.records[p].data.empty()) continue;
    if (!json.lines) out += first ? "\n  " : ",\n  ";
    if (IsRecordEnciphered(db, p)) continue;
    first = false;
    out += '{';
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (i > 0) out += ", ";
      out += keys[i];
      out += ": ";
      out += json.typed ? TypedJsonValue(db, p, slots[i], options)
                        : JsonQuote(Cp1252ToUtf8(RecordValueText(db, p, slots[i], options)));
    }
    out += json.lines ? "}\n" : "}";
  }
  if (!json.lines) out += first ? "]\n" : "\n]\n";
  return out;
}

bool ExportJson(const Database& db, bool filtered_only, const std::string& path,
                const FormatOptions& options) {
  std::vector<std::uint32_t> records = db.visible;
  if (!filtered_only) {
    records.resize(db.count());
    for (std::uint32_t p = 0; p < db.count(); ++p) records[p] = p;
  }
  OutputFile file(path);
  if (!file.ok()) return false;
  file.Write(RecordsAsJson(db, records, UsedFieldsInDisplayOrder(db.definition()), JsonOptions{},
                           options));
  return file.Close();
}

}  // namespace qv
