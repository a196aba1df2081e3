#pragma once
// The view editor: a view's name, which fields it shows in which order and how wide, and its
// filter and sort through the "Edit Filters" and "Sorting" dialogs. Cancel leaves the view as
// it was, filter and sort included.

#include <QDialog>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"

class QLineEdit;
class QListWidget;
class QSpinBox;

namespace qv::app {

class ViewEditorDialog : public QDialog {
  Q_OBJECT
 public:
  ViewEditorDialog(Database& db, int view, const FormatOptions& options, Prompter& prompter,
                   QWidget* parent = nullptr);

  QLineEdit* nameBox() const { return name_; }
  // One checkable entry per field that can be a column, in the view's order; checked = shown.
  QListWidget* fieldList() const { return fields_; }
  QSpinBox* widthBox() const { return width_; }
  void MoveCurrent(int step);

  void accept() override;
  void reject() override;

 private:
  void CurrentChanged();

  Database& db_;
  int view_;
  FormatOptions options_;
  Prompter& prompter_;
  Bytes saved_;  // the view block as it was, for Cancel
  bool db_changed_ = false;
  QLineEdit* name_;
  QListWidget* fields_;
  QSpinBox* width_;
};

}  // namespace qv::app
