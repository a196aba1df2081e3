#pragma once
// Turns SIGTERM, SIGHUP and SIGINT (a desktop logout, a closed terminal, Ctrl+C) into a Qt signal
// delivered by the event loop, so the program ends in order instead of dying with its changes.

#include <QObject>
#include <QSocketNotifier>
#include <memory>

namespace qv::app {

class SignalWatcher : public QObject {
  Q_OBJECT
 public:
  // Installs the handlers; one watcher per process.
  explicit SignalWatcher(QObject* parent = nullptr);
  ~SignalWatcher() override;

 signals:
  void received(int signal_number);

 private:
  void Drain();
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace qv::app
