#pragma once
// The start chooser: create a new database, or open one of the recent ones or any file.

#include <QDialog>
#include <vector>

#include "app/file_dialogs.h"

class QListWidget;

namespace qv::app {

class StartChooserDialog : public QDialog {
  Q_OBJECT
 public:
  StartChooserDialog(const std::vector<RecentEntry>& entries, QWidget* parent = nullptr);
  StartChoice choice() const { return choice_; }
  QListWidget* list() const { return list_; }

 private:
  void Choose(int row);
  QListWidget* list_;
  std::vector<RecentEntry> entries_;
  StartChoice choice_;
};

}  // namespace qv::app
