#pragma once
// What the strip under the tool bar shows while a linked database is open: where the user is
// (the databases of the stack and the records followed) and Back.

#include <QWidget>

#include "app/file_flows.h"
#include "engine/workspace.h"

class QLabel;
class QPushButton;

namespace qv::app {

class LinkBar : public QWidget {
  Q_OBJECT
 public:
  LinkBar(Workspace& workspace, FileFlows& flows, QWidget* parent = nullptr);
  // Shows the stack as it is now; says stackChanged when it grew or shrank since.
  void Update();
  // Back to the database below (the close-with-save rule first).
  bool Back();
  QLabel* crumbs() const { return crumbs_; }
  QPushButton* backButton() const { return back_; }

 signals:
  // Another database is current: what could be undone belongs to the one before.
  void stackChanged();
  // Back closed the top database; the list must show the one below.
  void returned();

 private:
  Workspace& workspace_;
  FileFlows& flows_;
  QLabel* crumbs_;
  QPushButton* back_;
  int shown_index_ = 0;
};

}  // namespace qv::app
