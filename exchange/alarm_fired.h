#pragma once
// What happens when an alarm goes off: the sound, the alarm's database and record found again,
// the "Alarm" reminder and the user's choice (OK, Goto Record, Snooze).

#include <string>

#include "engine/workspace.h"
#include "exchange/alarms.h"

namespace qv {

enum class AlarmChoice { Ok, GotoRecord, Snooze };

// What the reminder shows; texts in the database's 8-bit encoding.
struct AlarmReminder {
  std::string database_name;
  std::string field_names[2];  // empty when the settings name no field
  std::string field_texts[2];
};

// The screens and the sound, given by the program (or a test).
class AlarmScreens {
 public:
  virtual ~AlarmScreens() = default;
  virtual void PlaySound() = 0;
  virtual AlarmChoice ShowReminder(const AlarmReminder& reminder) = 0;
};

// The answers of AlarmFired and HandleAlarmNotification.
inline constexpr int kAlarmNotLoaded = -1;
inline constexpr int kAlarmHandled = 1;
inline constexpr int kAlarmShowRecord = 2;  // AlarmDatabase and LastRecord name the record

// Fires the entry. `open` is the database the program has open, if any: an alarm of that
// database works on it (and leaves saving to the program); any other database is opened for
// the alarm, saved when it changed, and closed.
int AlarmFired(Workspace& workspace, const AlarmEntry& entry, AlarmScreens& screens,
               Database* open);
// The hand-off of alarm `number`: kAlarmNotLoaded when there is no such entry.
int HandleAlarmNotification(Workspace& workspace, std::uint32_t number, AlarmScreens& screens,
                            Database* open);

}  // namespace qv
