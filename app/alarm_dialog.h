#pragma once
// The "Alarm" reminder: which database, the two fields the alarm settings chose, and the three
// answers OK, "Goto Record" and "Snooze".

#include <QDialog>

#include "exchange/alarm_fired.h"

class QLineEdit;
class QPushButton;

namespace qv::app {

class AlarmDialog : public QDialog {
  Q_OBJECT
 public:
  explicit AlarmDialog(const AlarmReminder& reminder, QWidget* parent = nullptr);
  AlarmChoice choice() const { return choice_; }

  QPushButton* okButton() const { return ok_; }
  QPushButton* gotoButton() const { return goto_; }
  QPushButton* snoozeButton() const { return snooze_; }
  QLineEdit* fieldBox(int i) const { return boxes_[i]; }

 private:
  void Choose(AlarmChoice choice);

  AlarmChoice choice_ = AlarmChoice::Ok;
  QPushButton* ok_;
  QPushButton* goto_;
  QPushButton* snooze_;
  QLineEdit* boxes_[2];
};

}  // namespace qv::app
