#pragma once
// A time field opened over a Time cell of the record list.

#include <QDialog>

#include "app/dialogs.h"

class QTimeEdit;

namespace qv::app {

class TimeChooser : public QDialog {
  Q_OBJECT
 public:
  explicit TimeChooser(const TimeOfDay& current, QWidget* parent = nullptr);
  // The chosen time; hours 255 after "No Time".
  TimeOfDay time() const { return chosen_; }

 private:
  QTimeEdit* edit_;
  TimeOfDay chosen_;
};

}  // namespace qv::app
