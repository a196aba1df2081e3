#pragma once
// The running program's alarm clock: at start it raises the alarms that fell due while the
// program was closed, then a timer raises each alarm when its time comes. Alarms set meanwhile
// by qvdb or another program are seen within a minute.

#include <QObject>
#include <QTimer>
#include <functional>
#include <set>
#include <utility>

#include "platform/clock.h"
#include "platform/settings.h"

namespace qv::app {

class AlarmScheduler : public QObject {
  Q_OBJECT
 public:
  // `reload` re-reads the settings others may have written; `raise` hands over one alarm as a
  // second launch would ("AppRunToHandleNotification N").
  AlarmScheduler(Settings& settings, const Clock& clock, std::function<void()> reload,
                 std::function<void(const QString&)> raise, QObject* parent = nullptr);
  // Raises what is due now and arms the timer.
  void Start();
  // One look at the alarms: raises those due, then arms the timer for the next.
  void Check();
  int interval() const { return timer_.interval(); }

 private:
  Settings& settings_;
  const Clock& clock_;
  std::function<void()> reload_;
  std::function<void(const QString&)> raise_;
  QTimer timer_;
  // Alarms handed over in this run (number, time), so one waiting for the user is not handed
  // over twice; a snoozed alarm comes back with a new time.
  std::set<std::pair<std::uint32_t, std::int64_t>> raised_;
};

}  // namespace qv::app
