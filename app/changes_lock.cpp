#include "app/changes_lock.h"

namespace qv::app {

ChangesLock::ChangesLock(Workspace& workspace, QObject* parent)
    : QObject(parent), workspace_(workspace) {
  // Edits reach the databases from many places; looking is cheaper than hooking every one.
  timer_.setInterval(250);
  connect(&timer_, &QTimer::timeout, this, &ChangesLock::Sync);
  timer_.start();
}

void ChangesLock::Sync() {
  for (int i = 0; i <= workspace_.index(); ++i) {
    Database* db = workspace_.slot(i);
    if (!db) continue;
    bool wanted = db->loaded && db->changed && !db->unsaved();
    // Busy (a qvdb command is writing): tried again on the next tick.
    if (wanted && !db->lock.Holds(db->path)) db->lock.TryLock(db->path);
    if (!wanted && db->lock.locked()) db->lock.Unlock();
  }
}

}  // namespace qv::app
