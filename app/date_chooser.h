#pragma once
// A calendar opened over a Date cell of the record list.

#include <QDialog>

#include "engine/format.h"

class QCalendarWidget;

namespace qv::app {

class DateChooser : public QDialog {
  Q_OBJECT
 public:
  explicit DateChooser(const Dmy& current, QWidget* parent = nullptr);
  // The chosen date; 1 January 1904 (the empty date) after "No Date".
  Dmy date() const { return chosen_; }

 private:
  QCalendarWidget* calendar_;
  Dmy chosen_;
};

}  // namespace qv::app
