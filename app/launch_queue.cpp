#include "app/launch_queue.h"

#include <QApplication>

namespace qv::app {

LaunchQueue::LaunchQueue(std::function<bool()> busy, std::function<void(const QString&)> deliver,
                         QObject* parent)
    : QObject(parent), busy_(std::move(busy)), deliver_(std::move(deliver)) {
  retry_.setInterval(100);
  connect(&retry_, &QTimer::timeout, this, &LaunchQueue::DeliverWhenFree);
}

void LaunchQueue::Post(const QString& text) {
  pending_.append(text);
  DeliverWhenFree();
}

void LaunchQueue::DeliverWhenFree() {
  // A hand-off may itself open dialogs; what arrives meanwhile waits for it.
  if (delivering_) return;
  while (!pending_.isEmpty() && !busy_()) {
    delivering_ = true;
    deliver_(pending_.takeFirst());
    delivering_ = false;
  }
  if (pending_.isEmpty())
    retry_.stop();
  else if (!retry_.isActive())
    retry_.start();
}

bool ModalInteractionOpen() {
  return QApplication::activeModalWidget() != nullptr ||
         QApplication::activePopupWidget() != nullptr;
}

}  // namespace qv::app
