#include "processing/json_export.h"

#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
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

std::string RecordsAsJson(const Database& db, bool filtered_only, const FormatOptions& options) {
  std::vector<int> slots = UsedFieldsInDisplayOrder(db.definition());
  std::vector<std::string> keys;
  for (int slot : slots)
    keys.push_back(JsonQuote(Cp1252ToUtf8(db.definition().field(slot).name())));
  std::string out = "[";
  bool first = true;
  for (std::uint32_t p = 0; p < db.count(); ++p) {
    if (db.records[p].data.empty()) continue;
    if (filtered_only && !RecordPassesFilter(db, p)) continue;
    if (IsRecordEnciphered(db, p)) continue;
    out += first ? "\n  {" : ",\n  {";
    first = false;
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (i > 0) out += ", ";
      out += keys[i];
      out += ": ";
      out += JsonQuote(Cp1252ToUtf8(RecordValueText(db, p, slots[i], options)));
    }
    out += "}";
  }
  out += first ? "]\n" : "\n]\n";
  return out;
}

bool ExportJson(const Database& db, bool filtered_only, const std::string& path,
                const FormatOptions& options) {
  OutputFile file(path);
  if (!file.ok()) return false;
  file.Write(RecordsAsJson(db, filtered_only, options));
  return file.Close();
}

}  // namespace qv
