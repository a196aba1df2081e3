#include "tests/support/builders.h"

#include <gtest/gtest.h>

#include "engine/format.h"

namespace qv::test {

DatabaseBuilder::DatabaseBuilder(std::string name) : db_(NewDatabase(name, clock_)) {}

DatabaseBuilder& DatabaseBuilder::Field(std::string name, FieldType type, unsigned length) {
  int slot = static_cast<int>(slots_.size());
  FieldDefinition f = db_->definition().field(slot);
  f.set_type(type);
  f.set_name(name);
  f.set_length(length);
  slots_.push_back(slot);
  return *this;
}

DatabaseBuilder& DatabaseBuilder::Items(std::vector<std::string> popup_items) {
  db_->schema.fields[slots_.back()].SetItems(popup_items);
  return *this;
}

DatabaseBuilder& DatabaseBuilder::Sort(int slot, bool forward) {
  db_->definition().set_sort_key(sort_keys_++, SortKey{slot, forward});
  return *this;
}

DatabaseBuilder& DatabaseBuilder::Options(FormatOptions options) {
  options_ = std::move(options);
  return *this;
}

DatabaseBuilder& DatabaseBuilder::Row(std::vector<std::string> texts) {
  std::vector<std::pair<int, std::string>> keyed;
  for (std::size_t i = 0; i < texts.size() && i < slots_.size(); ++i)
    keyed.emplace_back(slots_[i], texts[i]);
  StoreRecord(*db_, ValuesFromTexts(*db_, keyed, options_), kNewRecord);
  return *this;
}

std::unique_ptr<Database> DatabaseBuilder::Build() {
  ShowAllRecords(*db_);
  db_->changed = false;
  return std::move(db_);
}

RecordValues ValuesFromTexts(const Database& db, const std::vector<std::pair<int, std::string>>& texts,
                             const FormatOptions& options) {
  RecordValues values;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition f = db.definition().field(slot);
    if (f.used()) values.Set(slot, ParseValue(f, db.schema.fields[slot], "", options).value_or(Bytes{}));
  }
  for (const auto& [slot, text] : texts) {
    ConstFieldDefinition f = db.definition().field(slot);
    auto v = ParseValue(f, db.schema.fields[slot], text, options);
    if (!v) ADD_FAILURE() << "cannot parse '" << text << "' for " << f.name();
    values.Set(slot, v.value_or(TextValue(text)));
  }
  return values;
}

std::vector<std::string> Column(const Database& db, int slot, const FormatOptions& options) {
  std::vector<std::string> out;
  for (std::uint32_t i = 0; i < db.count(); ++i) out.push_back(RecordValueText(db, i, slot, options));
  return out;
}

}  // namespace qv::test
