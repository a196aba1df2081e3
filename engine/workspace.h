#pragma once
// The context every operation reaches the program's state through: the open-database stack,
// the host services and the few application-wide values. There are no globals.

#include <array>
#include <memory>
#include <string>

#include "engine/database.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "platform/settings.h"

namespace qv {

inline constexpr int kStackSlots = 4;

struct Preferences {
  bool auto_save = true;
  bool auto_sip = true;
  bool allow_checks = true;
  bool allow_popups = false;
  bool allow_date_time = false;
  char csv_separator = ',';
  bool csv_quote_all = false;
  std::string print_command;  // empty: the default print command
};

class Workspace {
 public:
  Workspace(Prompter& prompter, Settings& settings, const Clock& clock)
      : prompter(prompter), settings(settings), clock(clock) {
    Reset();
  }

  Prompter& prompter;
  Settings& settings;
  const Clock& clock;
  FormatOptions options;
  Preferences preferences;
  // The text last typed in the password dialog (shared by every password prompt).
  std::string password_buffer;

  // The database of the current slot; slot 0 always holds an object, possibly not loaded.
  Database& current() { return *slots_[static_cast<std::size_t>(index_)]; }
  const Database& current() const { return *slots_[static_cast<std::size_t>(index_)]; }
  bool has_open_database() const { return current().loaded; }
  int index() const { return index_; }
  Database* slot(int i) { return slots_[static_cast<std::size_t>(i)].get(); }

  // Four empty slots, slot 0 with a fresh empty database, index 0.
  void Reset() {
    for (auto& s : slots_) s.reset();
    slots_[0] = std::make_unique<Database>();
    index_ = 0;
  }
  // Replaces the current slot's database.
  void ReplaceCurrent(std::unique_ptr<Database> db) {
    slots_[static_cast<std::size_t>(index_)] = std::move(db);
  }
  // Opens `db` on top of the current one (a linked database); false when the stack is full.
  bool Push(std::unique_ptr<Database> db) {
    if (index_ + 1 >= kStackSlots) return false;
    slots_[static_cast<std::size_t>(++index_)] = std::move(db);
    return true;
  }
  // Closes the top database and returns to the one below; false at slot 0.
  bool Pop() {
    if (index_ == 0) return false;
    slots_[static_cast<std::size_t>(index_--)].reset();
    return true;
  }

 private:
  std::array<std::unique_ptr<Database>, kStackSlots> slots_;
  int index_ = 0;
};

}  // namespace qv
