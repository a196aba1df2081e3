#pragma once
// The record editor's alarm entry, shown when the database allows alarms: "Set Alarm for this
// Record" and the date and time of "Alarm Set For:". With automatic alarms it shows the alarm
// the record's date and time give, read-only.

#include <QWidget>
#include <optional>

#include "engine/workspace.h"

class QCheckBox;
class QDateTimeEdit;
class QLabel;

namespace qv::app {

class RecordAlarmRow : public QWidget {
  Q_OBJECT
 public:
  RecordAlarmRow(Workspace& workspace, Database& db, bool view_only, QWidget* parent = nullptr);
  // Shows the alarm of the record with this header (a new record has none).
  void Load(std::span<const std::uint8_t> prefix);
  // After the record was stored as `number`: sets, moves or clears its alarm.
  void Store(std::uint32_t number);

  QCheckBox* setBox() const { return set_; }
  QDateTimeEdit* when() const { return when_; }
  // The chosen alarm time (local seconds since 1970), nothing when none is set.
  std::optional<std::int64_t> Chosen() const;
  void Choose(std::optional<std::int64_t> time);

 signals:
  void edited();

 private:
  Workspace& workspace_;
  Database& db_;
  bool automatic_;
  std::optional<std::int64_t> loaded_;
  QCheckBox* set_;
  QDateTimeEdit* when_;
  QLabel* note_;
};

}  // namespace qv::app
