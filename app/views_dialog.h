#pragma once
// The views page: the list of a database's views with New View, Copy View, Edit View and
// Delete View; new, copied and edited views open in the view editor.

#include <QDialog>

#include "engine/workspace.h"
#include "platform/locale.h"

class QListWidget;

namespace qv::app {

class ViewsDialog : public QDialog {
  Q_OBJECT
 public:
  ViewsDialog(Database& db, const FormatOptions& options, Prompter& prompter,
              QWidget* parent = nullptr);
  QListWidget* list() const { return list_; }
  // Opens the view editor on view `v`; a view the list shows now is applied again on OK.
  void EditView(int v);

 private:
  void Fill(int select);
  Database& db_;
  FormatOptions options_;
  Prompter& prompter_;
  QListWidget* list_;
};

}  // namespace qv::app
