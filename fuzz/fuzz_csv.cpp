// libFuzzer target: a CSV file from outside. Reading it, making a database from it and
// importing it into one must never crash, with any of the usual separators, as UTF-8 or as
// Windows-1252, with the header declared or guessed. The first byte picks the options.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "engine/database.h"
#include "platform/system_clock.h"
#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/csv_new_database.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint8_t choice = data[0];
  std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  qv::SilentPrompter quiet;
  qv::SystemClock clock;
  qv::CsvImportOptions import_options;
  import_options.separator = ",;\t|"[choice & 3];
  import_options.encoding = choice & 4 ? qv::TextEncoding::Cp1252 : qv::TextEncoding::Utf8;
  import_options.header = choice & 8 ? qv::CsvHeader::Auto : qv::CsvHeader::Absent;
  qv::FormatOptions options;
  options.decimal_comma = choice & 16;
  qv::ImportResult result;
  auto db = qv::NewDatabaseFromCsv("Fuzz", text, import_options, options, clock, quiet, result);
  if (db) {
    qv::ImportResult again = qv::ImportCsvText(*db, text, import_options, options, quiet);
    for (std::uint32_t r = 0; r < db->count() && r < 4; ++r)
      for (int slot = 0; slot < qv::kFieldSlots; ++slot)
        qv::CsvQuote(qv::RecordValueText(*db, r, slot, options), false, import_options.separator);
    (void)again;
  }
  return 0;
}
