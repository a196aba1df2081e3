#pragma once
// The record editor: one control per used field in display order, with Previous and Next over
// the records that pass the filter, New, Duplicate and Delete. A record is stored when the user
// leaves it (OK, another record, New, Duplicate) through the sorted store, which recalculates
// the dependent fields and rebuilds the filtered list; mode 1 then enciphers its marked fields.

#include <QDialog>
#include <map>
#include <optional>

#include "app/open_hooks.h"
#include "engine/workspace.h"

class QCheckBox;
class QLabel;
class QPushButton;

namespace qv::app {

class FieldControl;
class RecordAlarmRow;

class RecordEditorDialog : public QDialog {
  Q_OBJECT
 public:
  // Opens on record `number` (kNewRecord: a new record with the fields' defaults).
  RecordEditorDialog(Workspace& workspace, Database& db, AccessGate& access, std::uint32_t number,
                     bool view_only, QWidget* parent = nullptr);
  // Deciphers the first record when it must be; false when the editor cannot show it.
  bool Start();
  // Whether any record was stored, added or deleted.
  bool changed() const { return changed_; }
  std::uint32_t number() const { return number_; }
  FieldControl* control(int slot) const;
  QCheckBox* encryptBox() const { return encrypt_; }
  RecordAlarmRow* alarmRow() const { return alarm_; }

  // The buttons' actions, public for keyboard shortcuts and tests.
  bool StoreShown();
  void ShowPrevious() { Step(-1); }
  void ShowNext() { Step(1); }
  void NewRecord();
  void DuplicateRecord();
  void DeleteRecord();
  void accept() override;
  void reject() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void BuildControls();
  RecordValues NewValues() const;
  void Show(std::uint32_t number, const RecordValues& values);
  bool ShowStored(std::uint32_t number);
  void Step(int direction);
  std::optional<RecordValues> Gather(bool report);
  void RefreshComputed();
  void EditPopups(int slot);
  void SelectExternal(int slot);
  // A Link field's "Open Linked Records" or a Linked field's "Reassign..." (record_editor_links).
  void LinkRequested(int slot);
  void UpdateButtons();
  void LeaveDeciphered();
  bool Allowed(Guarded action);

  Workspace& workspace_;
  Database& db_;
  AccessGate& access_;
  bool view_only_;
  std::uint32_t number_;
  RecordValues shown_;
  bool dirty_ = false;
  bool changed_ = false;
  bool deciphered_ = false;
  bool two_columns_ = false;  // the shown record was deciphered to be edited
  std::map<int, FieldControl*> controls_;
  QLabel* position_;
  QCheckBox* encrypt_;
  RecordAlarmRow* alarm_ = nullptr;  // when the database allows alarms
  QPushButton* previous_;
  QPushButton* next_;
  QPushButton* new_;
  QPushButton* duplicate_;
  QPushButton* delete_;
};

}  // namespace qv::app
