#include "app/alarm_scheduler.h"

#include <algorithm>

#include "app/launch_request.h"
#include "exchange/alarms.h"

namespace qv::app {

namespace {
constexpr std::int64_t kLongestWaitMs = 60'000;
}  // namespace

AlarmScheduler::AlarmScheduler(Settings& settings, const Clock& clock, std::function<void()> reload,
                               std::function<void(const QString&)> raise, QObject* parent)
    : QObject(parent),
      settings_(settings),
      clock_(clock),
      reload_(std::move(reload)),
      raise_(std::move(raise)) {
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &AlarmScheduler::Check);
}

void AlarmScheduler::Start() {
  Check();
}

void AlarmScheduler::Check() {
  if (reload_) reload_();
  const std::int64_t now = clock_.LocalNow();
  for (const AlarmEntry& entry : DueAlarmEntries(settings_, now)) {
    if (!raised_.insert({entry.number, entry.time}).second) continue;
    raise_(QString("%1 %2")
               .arg(QString::fromLatin1(kNotificationWord.data(),
                                        static_cast<int>(kNotificationWord.size())))
               .arg(entry.number));
  }
  std::int64_t wait = kLongestWaitMs;
  if (auto next = NextAlarmTime(settings_); next && *next > now)
    wait = std::min(wait, (*next - now) * 1000);
  timer_.start(static_cast<int>(std::max<std::int64_t>(wait, 1000)));
}

}  // namespace qv::app
