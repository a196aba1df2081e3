#include "exchange/transfer.h"

#include <sys/stat.h>

#include <filesystem>

#include "engine/text.h"
#include "processing/filter.h"
#include "processing/recalc.h"
#include "processing/sort.h"
#include "processing/store.h"
#include "security/protected_open.h"
#include "security/record_header.h"

namespace qv {

bool FieldTypesMatch(const DatabaseDefinition& target, const DatabaseDefinition& source) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (target.field(slot).type() != source.field(slot).type()) return false;
  return true;
}

int CopyRecordTo(std::uint32_t index, const Database& source, Database& target) {
  if (index >= source.count() || source.records[index].data.empty()) return 0;
  const Bytes& data = source.records[index].data;
  // Enciphered values are never copied as if they were values.
  if (auto header = ReadRecordHeader(data);
      header && header->has(kRecordBodyEnciphered | kRecordFieldsEnciphered))
    return 0;
  RecordValues values = DecodeRecord(data);
  values.prefix.clear();
  if (target.definition().record_header_on()) {
    RandomBytes random;
    RecordHeader header = NewRecordHeader(random);
    values.prefix.assign(header.bytes.begin(), header.bytes.end());
  }
  return StoreRecord(target, values, kNewRecord) ? 1 : 0;
}

TransferServices SecurityTransferServices(SecurityUi& ui, const Clock& clock) {
  TransferServices s{ui.prompter, clock, {}, {}, {}, {}};
  s.allowed = [&ui](Database& db, int action) {
    int access = CheckAccess(db.definition(), action, true, ui);
    if (access == 2)
      ui.prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
    return access == 1;
  };
  s.open = [&ui](const std::string& path) -> std::unique_ptr<Database> {
    auto db = std::make_unique<Database>();
    if (!OpenProtectedDatabase(*db, path, ui)) return nullptr;
    PositionOpenedDatabase(*db, ui.prompter);
    return db;
  };
  s.save = [&ui, &clock](Database& db) {
    if (EncipherOnDatabaseClose(db, ui) != EncipherResult::kCancelled && SaveDatabase(db, clock))
      return true;
    ui.prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
    return false;
  };
  return s;
}

namespace {

std::string Canonical(const std::string& path) {
  std::error_code ec;
  auto canonical = std::filesystem::weakly_canonical(path, ec);
  return ec ? path : canonical.string();
}

bool SamePath(const std::string& a, const std::string& b) {
  return EqualsNoCase(Canonical(a), Canonical(b));
}

// What a file looked like when the target was opened, so that a change made by another program
// meanwhile is never overwritten.
struct DiskStamp {
  bool present = false;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  off_t size = 0;
  std::uint32_t modification_date = 0;

  static DiskStamp Of(const std::string& path) {
    DiskStamp s;
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return s;
    s.present = true;
    s.seconds = st.st_mtim.tv_sec;
    s.nanoseconds = st.st_mtim.tv_nsec;
    s.size = st.st_size;
    Header header;
    if (ReadHeader(path, header) != 0) s.modification_date = header.modification_date;
    return s;
  }
  bool operator==(const DiskStamp&) const = default;
};

// After copies were appended from `first`: their own computed values, the sort order, the
// values that depend on position, the filtered list.
void FinishCopies(Database& target, std::uint32_t first, Prompter& prompter) {
  for (std::uint32_t p = first; p < target.count(); ++p) RecalculateRecord(target, p, prompter);
  ClearChangedFlags(target);
  SortDatabase(target, false, prompter);
  if (HasPositionDependentFields(target)) RecalculateFrom(target, 0, prompter);
  RebuildFilteredList(target);
}

// The records the selector names, last first, so the indexes still to be visited stay valid
// while records are copied and deleted.
std::vector<std::uint32_t> SelectedRecords(const Database& source, std::uint32_t selector) {
  std::vector<std::uint32_t> picked;
  if (selector != kAllViewRecords) {
    if (selector < source.count()) picked.push_back(selector);
    return picked;
  }
  for (std::uint32_t p = source.count(); p-- > 0;)
    if (RecordPassesFilter(source, p)) picked.push_back(p);
  return picked;
}

}  // namespace

TransferOutcome TransferRecords(bool move, std::uint32_t selector, Database& source,
                                const std::string& target_path, TransferServices& s) {
  TransferOutcome outcome;
  Prompter& prompter = s.prompter;
  const bool same = SamePath(target_path, source.path);
  if (same && move) {
    prompter.message(kSameDatabase, "Error", Icon::Error);
    return outcome;
  }
  outcome.result = same ? 1 : 0;
  Database* target = same ? &source : nullptr;
  for (Database* open : s.open_databases)
    if (!target && open && open->loaded && SamePath(open->path, target_path)) target = open;
  std::unique_ptr<Database> opened;
  DiskStamp stamp;
  if (!target) {
    stamp = DiskStamp::Of(target_path);
    opened = s.open(target_path);
    if (!opened) return outcome;
    target = opened.get();
  }
  if (!FieldTypesMatch(target->definition(), source.definition())) {
    prompter.message(StringPrintf(kFieldTypesDiffer, Cp1252ToUtf8(target->name).c_str()), "ERROR",
                     Icon::Warning);
    return outcome;
  }
  const std::vector<std::uint32_t> picked = SelectedRecords(source, selector);
  if (picked.empty()) {
    outcome.ok = true;
    return outcome;
  }
  if (!s.allowed(*target, kAddRecords)) return outcome;
  prompter.busy(true);
  const std::uint32_t first_copy = target->count();
  std::vector<std::uint32_t> to_delete;
  int delete_access = -1;  // asked once, at the first record moved
  std::uint32_t refused = 0;
  for (std::uint32_t index : picked) {
    if (!CopyRecordTo(index, source, *target)) {
      ++refused;
      continue;
    }
    ++outcome.copied;
    if (!move) continue;
    if (delete_access < 0) delete_access = s.allowed(source, kDeleteRecords) ? 1 : 0;
    if (delete_access == 1) to_delete.push_back(index);
  }
  if (outcome.copied > 0) FinishCopies(*target, first_copy, prompter);
  prompter.busy(false);
  if (refused > 0)
    prompter.message(StringPrintf("%u records could not be copied: their values are enciphered, or "
                                  "the target database is full.",
                                  refused),
                     "Error", Icon::Warning);
  if (opened && outcome.copied > 0) {
    // Another program changed the target since it was opened: keep its version, copy nothing.
    if (!(DiskStamp::Of(target_path) == stamp)) {
      prompter.message(StringPrintf("ERROR: %s was changed by another program while records were "
                                    "being copied to it. Nothing was saved.",
                                    target_path.c_str()),
                       "Error", Icon::Error);
      outcome.copied = 0;
      return outcome;
    }
    // The moved records leave the source only once their copies are stored.
    if (!s.save(*target)) {
      outcome.copied = 0;
      return outcome;
    }
  }
  if (!to_delete.empty()) {
    const std::uint32_t position = source.current;
    DeleteRecordsAndRecalculate(source, to_delete, prompter);
    outcome.deleted = static_cast<std::uint32_t>(to_delete.size());
    if (selector == kAllViewRecords)
      source.current = source.visible.empty() ? 0 : source.visible.front();
    else
      source.current = std::min(position, source.count() ? source.count() - 1 : 0);
  }
  outcome.ok = true;
  return outcome;
}

}  // namespace qv
