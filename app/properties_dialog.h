#pragma once
// Database properties as tabbed pages: General, Fields (with the field editor), Views,
// Security and Alarm Settings. Every page works on a copy of the database through the core's
// operations; OK hands the copy back, Cancel leaves the database untouched.

#include <QDialog>

#include "app/open_hooks.h"
#include "engine/workspace.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTabWidget;

namespace qv::app {

class AlarmSettingsPage;

class PropertiesDialog : public QDialog {
  Q_OBJECT
 public:
  enum PageNumber { kGeneralPage, kFieldsPage, kViewsPage, kSecurityPage, kAlarmsPage };
  PropertiesDialog(Workspace& workspace, AccessGate& access, const Database& db,
                   QWidget* parent = nullptr);
  void ShowPage(int page);
  // The working copy the pages change.
  Database& working() { return copy_; }
  // After OK: moves the changed copy into `db`, marked modified.
  void TakeResult(Database& db);
  void accept() override;

  QTabWidget* tabs() const { return tabs_; }
  QListWidget* fieldList() const { return fields_; }
  QLineEdit* nameEdit() const { return name_; }
  AlarmSettingsPage* alarmsPage() const { return alarms_page_; }
  // The Fields page's buttons, for keyboard use and tests: the field editor on a new or the
  // selected field, delete, move.
  void AddField();
  void EditSelectedField();
  void DeleteSelectedField();
  void MoveSelectedField(int by);
  void SetEncryptionChoice(int mode);

 signals:
  // Emitted when the field editor is about to open (tests drive it from here).
  void fieldEditorOpened(QDialog* editor);

 private:
  QWidget* GeneralPage();
  QWidget* FieldsPage();
  QWidget* ViewsPage();
  QWidget* SecurityPage();
  QWidget* AlarmsPage();
  void FillFields(int select_slot);
  void FillViews();
  void FillEncryptFlags();
  void FillLookup();
  int SelectedSlot() const;
  void ModeChosen(int mode);

  Workspace& workspace_;
  AccessGate& access_;
  Database copy_;
  QTabWidget* tabs_;
  QLineEdit* name_;
  QComboBox* lookup_;
  QListWidget* fields_;
  QListWidget* views_;
  QButtonGroup* modes_;
  QListWidget* encrypt_flags_;
  AlarmSettingsPage* alarms_page_;
  bool filling_ = false;
};

}  // namespace qv::app
