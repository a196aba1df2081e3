#include "app/data_flows.h"

#include <QFileInfo>
#include <atomic>
#include <cstdio>
#include <memory>

#include "app/set_values_dialog.h"
#include "app/status_text.h"
#include "engine/text.h"
#include "processing/csv_export.h"
#include "processing/csv_import.h"
#include "processing/json_export.h"
#include "processing/recalc.h"
#include "processing/record_text.h"
#include "processing/set_values.h"
#include "processing/sort.h"
#include "processing/views.h"

namespace qv::app {

namespace {

// Refused rows listed in the import report before the rest are counted.
constexpr std::size_t kListedProblems = 15;

void KeepCurrent(Database& db, std::optional<std::uint32_t> uid) {
  if (uid)
    for (std::uint32_t p = 0; p < db.count(); ++p)
      if (db.records[p].uid == *uid) {
        db.current = p;
        break;
      }
  bool shown = std::find(db.visible.begin(), db.visible.end(), db.current) != db.visible.end();
  if (!shown && !db.visible.empty()) db.current = db.visible.front();
}

std::string ImportReport(const ImportResult& result) {
  std::string text = "Imported " + GroupedNumber(result.imported) +
                     (result.imported == 1 ? " record." : " records.");
  if (result.problems.empty()) return text;
  text += result.problems.size() == 1
              ? std::string("\n\n1 row was refused:")
              : "\n\n" + GroupedNumber(result.problems.size()) + " rows were refused:";
  for (std::size_t i = 0; i < result.problems.size() && i < kListedProblems; ++i)
    text += StringPrintf("\nline %zu: %s", result.problems[i].line,
                         Cp1252ToUtf8(result.problems[i].reason).c_str());
  if (result.problems.size() > kListedProblems)
    text += StringPrintf("\n... and %zu more.", result.problems.size() - kListedProblems);
  return text;
}

}  // namespace

DataFlows::Outcome DataFlows::RunOnCopy(const std::string& title,
                                        std::function<bool(Database&, Prompter&)> work) {
  Database& db = workspace_.current();
  std::optional<std::uint32_t> uid;
  if (db.current < db.count()) uid = db.records[db.current].uid;
  auto copy = std::make_shared<Database>(db);
  auto keep = std::make_shared<bool>(false);
  bool finished = dialogs_.RunLong(
      title, [copy, keep, work](Prompter& p) { *keep = work(*copy, p); }, workspace_.prompter);
  if (!finished) return Outcome::Cancelled;
  // Another database may have been opened meanwhile (a hand-off from a second launch); the
  // result belongs to the one the work started on.
  const bool same = workspace_.has_open_database() && &workspace_.current() == &db &&
                    workspace_.current().path == copy->path;
  if (!*keep || !same) return Outcome::Dropped;
  db = std::move(*copy);
  KeepCurrent(db, uid);
  return Outcome::Kept;
}

std::optional<FindMatch> DataFlows::Search(const FindSettings& settings, int start, int start_field,
                                           bool report) {
  const Database& db = workspace_.current();
  auto match =
      FindRecord(db, settings, start, start_field, report, workspace_.options, workspace_.prompter);
  if (match) {
    workspace_.current().current = static_cast<std::uint32_t>(match->position);
    last_ = match;
  }
  return match;
}

std::optional<FindMatch> DataFlows::Find() {
  if (!workspace_.has_open_database()) return std::nullopt;
  Database& db = workspace_.current();
  auto settings = dialogs_.AskFind(db, LoadFindSettings(db.definition()));
  if (!settings) return std::nullopt;
  StoreFindSettings(db.definition(), *settings);
  return Search(*settings, static_cast<int>(db.current), 0, true);
}

std::optional<FindMatch> DataFlows::FindAgain() {
  if (!workspace_.has_open_database()) return std::nullopt;
  const Database& db = workspace_.current();
  const FindSettings settings = LoadFindSettings(db.definition());
  if (settings.text.empty()) return Find();
  if (!last_ || last_->position != static_cast<int>(db.current)) {
    // The user moved on since: the search continues after the current record.
    FindMatch here{static_cast<int>(db.current), kFieldSlots - 1, -1};
    last_ = here;
  }
  const FindMatch from = *last_;
  auto next = qv::FindAgain(db, settings, from, false, workspace_.options, workspace_.prompter);
  if (next) {
    workspace_.current().current = static_cast<std::uint32_t>(next->position);
    last_ = next;
    return next;
  }
  // Round to the first record, up to where this search began.
  auto wrapped = FindRecord(db, settings, 0, 0, false, workspace_.options, workspace_.prompter);
  if (!wrapped || wrapped->position > from.position ||
      (wrapped->position == from.position && wrapped->slot > from.slot)) {
    workspace_.prompter.message("Not Found in Database!", "Update", Icon::Information);
    return std::nullopt;
  }
  workspace_.current().current = static_cast<std::uint32_t>(wrapped->position);
  last_ = wrapped;
  return wrapped;
}

bool DataFlows::Sort() {
  if (!workspace_.has_open_database()) return false;
  if (!dialogs_.EditSort(workspace_.current(), -1, workspace_.prompter)) return false;
  if (RunOnCopy("Sorting...", [](Database& db, Prompter& p) {
        ResortAndRecalculate(db, p);
        return true;
      }) != Outcome::Kept) {
    // The keys are stored; the records follow them the next time the database is opened.
    workspace_.current().definition().set_resort_pending(true);
  }
  workspace_.current().changed = true;
  return true;
}

bool DataFlows::Filter() {
  if (!workspace_.has_open_database()) return false;
  Database& db = workspace_.current();
  std::optional<std::uint32_t> uid;
  if (db.current < db.count()) uid = db.records[db.current].uid;
  bool stored = dialogs_.EditFilter(db, -1, workspace_.options, workspace_.prompter);
  if (stored) KeepCurrent(db, uid);
  return stored;
}

bool DataFlows::SortOnColumn(int slot, bool forward) {
  if (!workspace_.has_open_database()) return false;
  RunOnCopy("Sorting...", [slot, forward](Database& db, Prompter& p) {
    qv::SortOnColumn(db, slot, forward, p);
    db.changed = true;
    return true;
  });
  return true;
}

bool DataFlows::ApplyView(int view) {
  if (!workspace_.has_open_database()) return false;
  return RunOnCopy("Applying View...", [view](Database& db, Prompter& p) {
           if (!qv::ApplyView(db, view, p)) return false;
           db.changed = true;
           return true;
         }) == Outcome::Kept;
}

void DataFlows::Export() {
  if (!workspace_.has_open_database()) return;
  const Database& db = workspace_.current();
  auto request = dialogs_.AskExport(db, workspace_.preferences);
  if (!request) return;
  auto copy = std::make_shared<Database>(db);
  auto ok = std::make_shared<bool>(false);
  auto cancelled = std::make_shared<std::atomic<bool>>(false);
  const FormatOptions options = workspace_.options;
  const ExportRequest r = *request;
  bool finished = dialogs_.RunLong(
      "Exporting Records...",
      [copy, ok, cancelled, options, r](Prompter& p) {
        switch (r.format) {
          case ExportRequest::Csv:
            *ok = ExportCsv(*copy, r.csv, r.path, options, p) == 1;
            break;
          case ExportRequest::Json:
            *ok = ExportJson(*copy, r.csv.filtered_only, r.path, options);
            break;
          case ExportRequest::Text:
            *ok =
                ExportRecordsAsText(*copy, r.text_all_filtered, r.path, options, p, r.csv.encoding);
            break;
        }
        // A cancelled export leaves no half-written file behind.
        if (*cancelled) std::remove(r.path.c_str());
      },
      workspace_.prompter);
  if (!finished) {
    *cancelled = true;
    return;
  }
  if (r.format == ExportRequest::Text) return;  // it said how it went
  if (*ok)
    workspace_.prompter.message("File Exported OK", "Update", Icon::Information);
  else if (!QFileInfo::exists(QString::fromStdString(r.path)))
    workspace_.prompter.message("ERROR: Unable to open file for writing.", "Error", Icon::Error);
  else
    workspace_.prompter.message(
        "Some records or values could not be read; the file holds the rest.", "Error",
        Icon::Exclamation);
}

bool DataFlows::Import() {
  if (!workspace_.has_open_database()) return false;
  Database& db = workspace_.current();
  if (access_.CheckAccess(workspace_, db, Guarded::AddRecords, true) != kAccessFull) return false;
  auto request = dialogs_.AskImport(db, workspace_.preferences);
  if (!request) return false;
  auto result = std::make_shared<ImportResult>();
  const FormatOptions options = workspace_.options;
  const ImportRequest r = *request;
  Outcome outcome =
      RunOnCopy("Importing from .CSV File...", [result, options, r](Database& copy, Prompter& p) {
        *result = ImportCsvFile(copy, r.path, r.options, options, p);
        return result->ok && result->imported > 0;
      });
  if (outcome == Outcome::Cancelled) return false;
  const bool kept = outcome == Outcome::Kept;
  if (!kept && !result->ok && !result->error.empty()) {
    workspace_.prompter.message(Cp1252ToUtf8(result->error), "Import CSV", Icon::Exclamation);
    return false;
  }
  if (!kept && result->problems.empty() && result->ok) {
    if (result->imported == 0)
      workspace_.prompter.message("The file holds no records to import.", "Import CSV",
                                  Icon::Information);
    return false;
  }
  workspace_.prompter.message(ImportReport(*result), "Import CSV",
                              result->problems.empty() ? Icon::Information : Icon::Exclamation);
  return kept;
}

bool DataFlows::SetValues(int slot) {
  if (!workspace_.has_open_database()) return false;
  Database& db = workspace_.current();
  if (!SetValuesDialog::Settable(db.definition().field_type(slot))) {
    workspace_.prompter.message("Values of this type of field cannot be set for all records.",
                                "ERROR", Icon::Exclamation);
    return false;
  }
  if (access_.CheckAccess(workspace_, db, Guarded::EditRecords, true) != kAccessFull) return false;
  auto value = dialogs_.AskSetValue(db, slot, workspace_.options, workspace_.prompter);
  if (!value) return false;
  auto skipped = std::make_shared<std::uint32_t>(0);
  const Bytes bytes = *value;
  Outcome outcome =
      RunOnCopy("Setting Values...", [slot, bytes, skipped](Database& copy, Prompter& p) {
        SetValuesResult r = SetValuesOfField(copy, slot, bytes, p);
        *skipped = r.skipped;
        return r.changed > 0;
      });
  if (outcome == Outcome::Cancelled) return false;
  const bool kept = outcome == Outcome::Kept;
  if (*skipped > 0)
    workspace_.prompter.message(
        StringPrintf("%u records are enciphered and were left as they were.", *skipped), "Update",
        Icon::Exclamation);
  return kept;
}

}  // namespace qv::app
