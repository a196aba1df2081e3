#include "app/alarm_handler.h"

#include "app/alarm_dialog.h"

namespace qv::app {

int GuiAlarmHandler::HandleNotification(int alarm_number, Workspace& workspace) {
  if (alarm_number <= 0) return kAlarmNotLoaded;
  return HandleAlarmNotification(workspace, static_cast<std::uint32_t>(alarm_number), *this,
                                 &workspace.current());
}

AlarmChoice GuiAlarmHandler::ShowReminder(const AlarmReminder& reminder) {
  AlarmDialog dialog(reminder, parent_);
  if (hook_) hook_(dialog);
  // An alarm comes while the user may be elsewhere: the reminder is raised above other windows.
  dialog.setWindowFlag(Qt::WindowStaysOnTopHint);
  dialog.exec();
  return dialog.choice();
}

}  // namespace qv::app
