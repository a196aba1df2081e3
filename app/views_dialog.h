#pragma once
// The list of a database's views with New View, Copy View and Delete View.

#include <QDialog>

#include "engine/workspace.h"

class QListWidget;

namespace qv::app {

class ViewsDialog : public QDialog {
  Q_OBJECT
 public:
  ViewsDialog(Database& db, Prompter& prompter, QWidget* parent = nullptr);

 private:
  void Fill(int select);
  Database& db_;
  Prompter& prompter_;
  QListWidget* list_;
};

}  // namespace qv::app
