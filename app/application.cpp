#include "app/application.h"

#include <QDir>
#include <QFileInfo>

#include "app/core_calls.h"
#include "app/launch_request.h"
#include "app/preferences_store.h"
#include "app/recovery_file.h"

namespace qv::app {

Application::Application(ApplicationServices services)
    : s_(services), workspace_(services.prompter, services.settings, services.clock) {}

Application::~Application() {
  Shutdown();
}

MainWindow& Application::CreateWindow() {
  if (!window_)
    window_ = std::make_unique<MainWindow>(
        AppContext{workspace_, s_.paths, s_.dialogs, s_.access, s_.converter, s_.alarms});
  if (!changes_lock_) changes_lock_ = std::make_unique<ChangesLock>(workspace_);
  return *window_;
}

void Application::Start(const std::vector<std::string>& arguments) {
  CreateWindow();
  s_.settings.write("Version", "3.0");
  QDir().mkpath(QString::fromStdString(s_.paths.DataFolder()));
  workspace_.Reset();
  LaunchRequest request = ParseLaunch(arguments);
  if (request.kind == LaunchRequest::Notification) {
    // The alarm code may leave AlarmDatabase and LastRecord for the first open below.
    int number = NotificationNumber(request.text);
    if (number != 0) s_.alarms.HandleNotification(number, workspace_);
  } else if (request.kind == LaunchRequest::OpenFile) {
    QString path = QFileInfo(QString::fromStdString(request.path)).absoluteFilePath();
    s_.settings.write("LastFileUsed", path.toStdString());
  }
  window_->show();
  if (!RestoreRecovery()) window_->OpenFirstDatabase();
}

bool Application::RestoreRecovery() {
  auto db = TakeRecovery(s_.settings, s_.prompter,
                         [this](Database& d) { return s_.access.AllowOpen(workspace_, d); });
  if (!db) return false;
  workspace_.preferences = ReadPreferences(s_.settings);
  workspace_.ReplaceCurrent(std::move(db));
  RebuildList(workspace_.current());
  window_->panel()->Refresh();
  return true;
}

void Application::EndSession(bool quitting) {
  if (shut_down_ || !window_) return;
  CloseUnattended(workspace_, s_.paths, quitting);
  if (quitting) window_->flows().RememberLastFile();
  (quitting ? ended_from_outside_ : kept_for_recovery_) = true;
}

void Application::Shutdown() {
  if (shut_down_ || !window_) return;
  shut_down_ = true;
  window_->flows().CloseAll(false, true);
  // The session went on after a commit-data request and ended normally: what was kept then was
  // saved or declined since.
  if (kept_for_recovery_ && !ended_from_outside_) DropRecovery(s_.settings);
  WritePreferences(s_.settings, workspace_.preferences);
  window_.reset();
  changes_lock_.reset();
  workspace_.Reset();
}

}  // namespace qv::app
