#pragma once
// Files in the 2.x layout, written byte by byte from docs/FORMAT.md ("2.x databases") so the
// older-format reader is checked against the document and not against itself.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/bytes.h"

namespace qv::test {

struct OldFieldSpec {
  OldFieldSpec(std::uint8_t type, std::string name) : type(type), name(std::move(name)) {}
  OldFieldSpec& Decimals(std::uint8_t n) {
    decimals = n;
    return *this;
  }
  OldFieldSpec& Hidden() {
    shown = false;
    return *this;
  }
  OldFieldSpec& Other(std::string database) {
    other_database = std::move(database);
    return *this;
  }
  OldFieldSpec& List(std::vector<std::string> texts) {
    items = std::move(texts);
    return *this;
  }

  std::uint8_t type;  // older type code
  std::string name;
  std::uint16_t length = 40;
  std::uint8_t width = 50;
  bool shown = true;
  std::uint8_t decimals = 0;
  std::string other_database;      // Link, Linked, Relationship
  std::vector<std::string> items;  // Pop-Up list
};

class OldDatabaseBuilder {
 public:
  explicit OldDatabaseBuilder(std::string name) : name_(std::move(name)) {}
  OldDatabaseBuilder& Field(OldFieldSpec spec);
  OldDatabaseBuilder& Sort(int slot, bool forward = true);
  // One record: per field the value bytes (empty for "No Value").
  OldDatabaseBuilder& Row(std::vector<Bytes> values);
  // A record given as it is stored, damaged or not.
  OldDatabaseBuilder& RawRow(Bytes record);
  // Replaces a field's pop-up list record with these bytes.
  OldDatabaseBuilder& RawPopupRecord(int slot, Bytes record);
  Bytes Build() const;
  // Builds and writes the file; fails the test when it cannot be written.
  void Write(const std::string& path) const;

  // Value helpers of the older layout.
  static Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }
  static Bytes Integer(std::int32_t v);
  static Bytes Date(int day, int month, int year);
  static Bytes Time(int hours, int minutes) {
    return {static_cast<std::uint8_t>(hours), static_cast<std::uint8_t>(minutes)};
  }

 private:
  std::string name_;
  std::vector<OldFieldSpec> fields_;
  std::vector<std::pair<int, bool>> sort_;
  std::vector<Bytes> records_;
  std::vector<std::pair<int, Bytes>> raw_popups_;
};

}  // namespace qv::test
