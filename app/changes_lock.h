#pragma once
// Holds the lock of every open database file that has unsaved changes, so a qvdb command that
// would write the same file says so instead of racing the save that will follow. Released once
// the changes are saved or dropped.

#include <QObject>
#include <QTimer>

#include "engine/workspace.h"

namespace qv::app {

class ChangesLock : public QObject {
  Q_OBJECT
 public:
  explicit ChangesLock(Workspace& workspace, QObject* parent = nullptr);
  // Takes or releases the locks as the databases now stand (also done every quarter second).
  void Sync();

 private:
  Workspace& workspace_;
  QTimer timer_;
};

}  // namespace qv::app
