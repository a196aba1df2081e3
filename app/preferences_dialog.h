#pragma once
// "Preferences": the five switches of the program.

#include <QDialog>

#include "app/preferences_store.h"
#include "engine/workspace.h"

class QCheckBox;
class QLineEdit;
class QSpinBox;
class QVBoxLayout;

namespace qv::app {

class PreferencesDialog : public QDialog {
  Q_OBJECT
 public:
  explicit PreferencesDialog(const Preferences& preferences, QWidget* parent = nullptr);
  // The dialog's values over `base` (fields the dialog does not show are kept).
  Preferences values(Preferences base) const;
  QCheckBox* box(int i) const { return boxes_[i]; }
  // The beaming settings: the peer beams go to, the port, whether other computers may beam here.
  void setBeaming(const BeamPreferences& beaming);
  BeamPreferences beaming() const;

 private:
  void AddBeaming(QVBoxLayout* layout);

  QCheckBox* boxes_[5];
  QLineEdit* print_command_;
  QLineEdit* beam_peer_;
  QSpinBox* beam_port_;
  QCheckBox* allow_network_;
  BeamPreferences beaming_;  // as shown, so a bind address set outside the dialog is kept
};

}  // namespace qv::app
