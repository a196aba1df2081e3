#pragma once
// The alarm code the program hands notifications to: plays the sound, shows the "Alarm"
// reminder over the main window and carries out the user's choice through the core.

#include <QPointer>
#include <QWidget>
#include <functional>

#include "app/alarm_sound.h"
#include "app/open_hooks.h"
#include "exchange/alarm_fired.h"

namespace qv::app {

class AlarmDialog;

class GuiAlarmHandler : public NotificationHandler, public AlarmScreens {
 public:
  explicit GuiAlarmHandler(AlarmSound& sound) : sound_(sound) {}
  void setParent(QWidget* parent) { parent_ = parent; }
  // Tests answer the reminder from here (the dialog is shown modally after this runs).
  void setReminderHook(std::function<void(AlarmDialog&)> hook) { hook_ = std::move(hook); }

  int HandleNotification(int alarm_number, Workspace& workspace) override;
  void PlaySound() override { sound_.Play(); }
  AlarmChoice ShowReminder(const AlarmReminder& reminder) override;

 private:
  AlarmSound& sound_;
  QPointer<QWidget> parent_;
  std::function<void(AlarmDialog&)> hook_;
};

}  // namespace qv::app
