#pragma once
// The Alarm Settings page of the database properties: whether records may carry alarms,
// "Alarms Are" Manual or Automatic (from a date and a time field), the two fields the reminder
// shows and the snooze time. It works on the properties' copy of the database.

#include <QWidget>

#include "engine/database.h"
#include "exchange/alarm_settings.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QRadioButton;
class QSpinBox;

namespace qv::app {

class AlarmSettingsPage : public QWidget {
  Q_OBJECT
 public:
  AlarmSettingsPage(const Database& copy, QWidget* parent = nullptr);
  // The settings as chosen on the page.
  AlarmSettings Chosen() const;
  // Why the choice cannot be stored (empty when it can).
  QString Problem() const;
  // Stores the choice into the copy through the core.
  void Store(Database& copy) const;

  QCheckBox* allowBox() const { return allow_; }
  QRadioButton* automaticChoice() const { return automatic_; }
  QComboBox* dateField() const { return date_; }
  QComboBox* timeField() const { return time_; }
  QComboBox* reminderField(int i) const { return reminder_[i]; }
  QSpinBox* snoozeAmount() const { return snooze_; }
  QComboBox* snoozeUnit() const { return unit_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void FillFieldChoices();
  void UpdateEnabled();

  const Database& copy_;
  QCheckBox* allow_;
  QWidget* body_;
  QRadioButton* manual_;
  QRadioButton* automatic_;
  QComboBox* date_;
  QComboBox* time_;
  QComboBox* reminder_[2];
  QSpinBox* snooze_;
  QComboBox* unit_;
};

}  // namespace qv::app
