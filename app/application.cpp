#include "app/application.h"

#include <QDir>
#include <QFileInfo>

#include "app/launch_request.h"
#include "app/preferences_store.h"

namespace qv::app {

Application::Application(ApplicationServices services)
    : s_(services), workspace_(services.prompter, services.settings, services.clock) {}

Application::~Application() { Shutdown(); }

MainWindow& Application::CreateWindow() {
  if (!window_)
    window_ = std::make_unique<MainWindow>(
        AppContext{workspace_, s_.paths, s_.dialogs, s_.access, s_.converter, s_.alarms});
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
  window_->OpenFirstDatabase();
}

void Application::Shutdown() {
  if (shut_down_ || !window_) return;
  shut_down_ = true;
  window_->flows().CloseAll(false, true);
  WritePreferences(s_.settings, workspace_.preferences);
  window_.reset();
  workspace_.Reset();
}

}  // namespace qv::app
