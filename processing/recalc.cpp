#include "processing/recalc.h"

#include <array>
#include <vector>

#include "engine/record.h"

#include "processing/filter.h"
#include "processing/formula.h"
#include "processing/sort.h"
#include "security/enciphered.h"

namespace qv {

namespace {

bool HasCalculatedFields(const Database& db) {
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    unsigned type = db.definition().field(slot).type();
    if (type == kCalculated || type == kConditional) return true;
  }
  return false;
}

bool SortKeyIsCalculated(const Database& db) {
  for (int k = 0; k < kSortKeys; ++k) {
    unsigned type = db.definition().field_type(EffectiveSortKey(db, k).field);
    if (type == kCalculated || type == kConditional) return true;
  }
  return false;
}

// One step of the dependency search. The operands are the program's first two field operands;
// the refers byte's bits 0 and 1 say whether each is taken from the previous record.
bool Visit(const Database& db, int f, std::array<std::uint8_t, kFieldSlots>& visited) {
  if (f < 0 || f >= kFieldSlots || visited[f]) return false;
  visited[f] = 1;
  ConstFieldDefinition field = db.definition().field(f);
  if (field.type() != kCalculated) return false;
  FormulaOperands ops = FormulaOperandSlots(db.definition(), f);
  std::uint8_t refers = field.refers_byte();
  bool first_previous = (refers & 0x01) != 0;
  bool second_previous = (refers & 0x02) != 0;
  auto changed = [&](int slot) { return slot >= 0 && slot < kFieldSlots && db.field_changed[slot]; };
  if ((first_previous && changed(ops.first)) || (second_previous && changed(ops.second)))
    return true;
  if (ops.first >= 0 && ops.first != f && !first_previous && Visit(db, ops.first, visited))
    return true;
  if (ops.second >= 0 && ops.second != f && !second_previous)
    return Visit(db, ops.second, visited);
  return false;
}

void EndPass(Database& db) {
  db.recalculating = false;
  db.redraw = true;
}

// Recalculates positions start..count-1 (only the passing ones under a filter), each with the
// record before it in display order; stops at the first failure.
int Walk(Database& db, std::uint32_t start, Prompter& prompter, bool only_position_dependent) {
  const bool filtered = FilterActive(db);
  int previous = -1;
  if (start > 0 && start <= db.count())
    previous = filtered ? StepPassingRecords(db, static_cast<int>(start), -1)
                        : static_cast<int>(start) - 1;
  const std::vector<ComputedField> fields = ComputedFieldsInOrder(db.definition(), only_position_dependent);
  Bytes work;  // one work buffer, reused from record to record
  work.reserve(LargestRecordSize(db.definition()));
  for (std::uint32_t k = start; k < db.count(); ++k) {
    if (filtered && !RecordPassesFilter(db, k)) continue;
    RecordData& data = db.records[k].data;
    if (data.empty()) return -1;
    // Enciphered records keep their values, and give the next one no previous values.
    if (IsRecordEnciphered(data)) {
      previous = -1;
      continue;
    }
    work.assign(data.begin(), data.end());
    std::span<const std::uint8_t> before =
        previous >= 0 ? std::span<const std::uint8_t>(db.records[static_cast<std::size_t>(previous)].data)
                      : std::span<const std::uint8_t>();
    ComputeFields(db, db.definition(), work, before, prompter, fields);
    if (data != work) {
      data = work;  // storage of its own, exactly as long as the record
      db.changed = true;
    }
    previous = static_cast<int>(k);
  }
  return 0;
}

}  // namespace

bool HasPositionDependentFields(const Database& db) {
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db.definition().field(slot).position_dependent()) return true;
  return false;
}

void ClearChangedFlags(Database& db) { db.field_changed.fill(0); }

bool HasCrossRecordDependency(const Database& db) {
  std::array<std::uint8_t, kFieldSlots> visited{};
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (Visit(db, slot, visited)) return true;
  return false;
}

void RecalculateAfterChange(Database& db, std::uint32_t a, std::uint32_t b, Prompter& prompter) {
  std::uint32_t from = a < b ? a : b;
  if (a != b && HasPositionDependentFields(db)) {
    RecalculateFrom(db, from, prompter);
  } else if (HasCrossRecordDependency(db)) {
    RecalculateFrom(db, from, prompter);
  }
}

int RecalculateFrom(Database& db, std::uint32_t start, Prompter& prompter) {
  db.recalculating = true;
  prompter.progress("Recalculating Fields");
  if (!HasCalculatedFields(db)) {
    EndPass(db);
    return 0;
  }
  if (SortKeyIsCalculated(db)) {
    db.definition().set_resort_pending(true);
  } else if (db.definition().resort_pending()) {
    prompter.progress("Resorting...");
    SortDatabase(db, false, prompter);
    db.definition().set_resort_pending(false);
    start = 0;
  }
  prompter.progress("Recalculating Fields...");
  if (Walk(db, start, prompter, false) != 0) {
    EndPass(db);
    return -1;  // the pending resort stays pending
  }
  if (db.definition().resort_pending()) {
    SortDatabase(db, false, prompter);
    db.definition().set_resort_pending(false);
    if (HasPositionDependentFields(db)) {
      prompter.progress("Recalculating Previous Record Calculations...");
      RecalculatePreviousRecordFields(db, prompter);
    }
  }
  EndPass(db);
  return 0;
}

int RecalculateRecord(Database& db, std::uint32_t position, Prompter& prompter) {
  if (position >= db.count() || db.records[position].data.empty()) return -1;
  if (IsRecordEnciphered(db, position)) return 0;
  Bytes work = db.records[position].data;
  ComputeRecordFormulas(db, db.definition(), work, PreviousInDisplayOrder(db, position), prompter);
  if (work != db.records[position].data) {
    db.records[position].data = std::move(work);
    db.changed = true;
  }
  return 0;
}

int RecalculatePreviousRecordFields(Database& db, Prompter& prompter) {
  return Walk(db, 0, prompter, true);
}

void ResortAndRecalculate(Database& db, Prompter& prompter) {
  SortDatabase(db, true, prompter);
  RecalculateAfterChange(db, 0, 1, prompter);
  db.definition().set_resort_pending(false);
}

}  // namespace qv
