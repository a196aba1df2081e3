#include "processing/record_text.h"

#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "processing/output_file.h"
#include "security/enciphered.h"

namespace qv {

bool FieldShown(ConstFieldDefinition field) {
  return field.bytes()[5] != 0;
}

void WriteRecordText(const Database& db, std::uint32_t number, int level,
                     const FormatOptions& options, std::string& out,
                     const LinkedRecordsWriter& linked) {
  if (number >= db.count()) return;
  const std::string indent(static_cast<std::size_t>(level) * 3, ' ');
  for (int slot : UsedFieldsInDisplayOrder(db.definition())) {
    ConstFieldDefinition field = db.definition().field(slot);
    if (!FieldShown(field)) continue;
    if (field.type() == kLink) {
      if (linked) linked(db, number, slot, level + 1, out);
      continue;
    }
    std::string text = RecordValueText(db, number, slot, options);
    if (text.size() > 2048) text.resize(2048);
    out += StringPrintf("%s%s: %s\n", indent.c_str(), field.name().c_str(), text.c_str());
  }
  out += "----------------------------------------\n";
}

bool ExportRecordsAsText(const Database& db, bool all_filtered, const std::string& path,
                         const FormatOptions& options, Prompter& prompter, TextEncoding encoding,
                         const LinkedRecordsWriter& linked) {
  if (!db.loaded) return false;
  prompter.busy(true);
  OutputFile file(path);
  if (!file.ok()) {
    prompter.busy(false);
    prompter.message("ERROR: Unable to open file for writing.", "Error", Icon::Error);
    return false;
  }
  std::string text;
  if (all_filtered) {
    for (std::uint32_t p = 0; p < db.count(); ++p) {
      if (!RecordPassesFilter(db, p) || IsRecordEnciphered(db, p)) continue;
      text.clear();
      WriteRecordText(db, p, 0, options, text, linked);
      file.Write(EncodeForFile(text, encoding));
    }
  } else if (db.current < db.count() && !IsRecordEnciphered(db, db.current)) {
    WriteRecordText(db, db.current, 0, options, text, linked);
    file.Write(EncodeForFile(text, encoding));
  }
  bool ok = file.Close();
  prompter.busy(false);
  if (!ok) {
    prompter.message("ERROR: Unable to open file for writing.", "Error", Icon::Error);
    return false;
  }
  prompter.message("File Exported OK", "Update", Icon::Information);
  return true;
}

}  // namespace qv
