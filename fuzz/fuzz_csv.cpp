// libFuzzer target: a CSV file from outside. Reading it, making a database from it and
// importing it into one must never crash.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "engine/database.h"
#include "platform/system_clock.h"
#include "processing/csv_import.h"
#include "processing/csv_new_database.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  qv::SilentPrompter quiet;
  qv::SystemClock clock;
  qv::CsvImportOptions import_options;
  qv::FormatOptions options;
  qv::ImportResult result;
  auto db = qv::NewDatabaseFromCsv("Fuzz", text, import_options, options, clock, quiet, result);
  if (db) {
    qv::ImportResult again = qv::ImportCsvText(*db, text, import_options, options, quiet);
    (void)again;
  }
  return 0;
}
