#pragma once
// "Preferences": the five switches of the program.

#include <QDialog>

#include "engine/workspace.h"

class QCheckBox;
class QLineEdit;

namespace qv::app {

class PreferencesDialog : public QDialog {
  Q_OBJECT
 public:
  explicit PreferencesDialog(const Preferences& preferences, QWidget* parent = nullptr);
  // The dialog's values over `base` (fields the dialog does not show are kept).
  Preferences values(Preferences base) const;
  QCheckBox* box(int i) const { return boxes_[i]; }

 private:
  QCheckBox* boxes_[5];
  QLineEdit* print_command_;
};

}  // namespace qv::app
