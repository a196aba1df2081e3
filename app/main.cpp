// quorvant: the desktop program.

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QSessionManager>
#include <QStatusBar>
#include <clocale>
#include <cstdio>
#include <string_view>

#include "app/alarm_handler.h"
#include "app/alarm_scheduler.h"
#include "app/alarm_sound.h"
#include "app/application.h"
#include "app/gui_prompter.h"
#include "app/launch_request.h"
#include "app/older_format_converter.h"
#include "app/password_dialog.h"
#include "app/security_gate.h"
#include "app/signal_watcher.h"
#include "app/single_instance.h"
#include "app/widget_dialogs.h"
#include "platform/qt/qt_locale.h"
#include "platform/qt/qt_paths.h"
#include "platform/qt/qt_settings.h"
#include "platform/system_clock.h"

int main(int argc, char** argv) {
  // Answered before any window system is needed, so scripts and package checks can ask.
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::printf("quorvant 3.0\n");
    return 0;
  }
  QApplication qt(argc, argv);
  // Qt set the C library's locale from the environment; stored numbers always use ".".
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("Quorvant");
  QApplication::setApplicationVersion("3.0");
  // The installed theme icon where there is one; the built-in one otherwise.
  QApplication::setWindowIcon(QIcon::fromTheme("quorvant", QIcon(":/icons/quorvant.png")));
  QGuiApplication::setDesktopFileName("quorvant");

  std::vector<std::string> arguments;
  for (const QString& a : QApplication::arguments().mid(1)) arguments.push_back(a.toStdString());
  qv::QtPaths paths;
  qv::app::LaunchRequest request = qv::app::ParseLaunch(arguments);
  if (request.kind == qv::app::LaunchRequest::OpenFile)
    request.path = QFileInfo(QString::fromStdString(request.path)).absoluteFilePath().toStdString();
  qv::app::SingleInstance instance(
      qv::app::SingleInstance::ServerName(QString::fromStdString(paths.DataFolder())));
  if (instance.HandOff(QString::fromStdString(qv::app::LaunchText(request)))) return 0;
  instance.Listen();

  qv::QtSettings settings;
  qv::SystemClock clock;
  qv::app::GuiPrompter prompter;
  qv::app::WidgetDialogs dialogs;
  qv::app::GuiPasswordPrompter passwords;
  qv::app::SecurityAccessGate access(passwords);
  qv::app::OlderFormatConverter converter;
  qv::app::AlarmSound sound;
  qv::app::GuiAlarmHandler alarms(sound);
  qv::app::Application application(qv::app::ApplicationServices{
      settings, paths, clock, prompter, dialogs, access, converter, alarms});
  application.workspace().options = qv::SystemFormatOptions(&settings);
  dialogs.setWorkspace(&application.workspace());
  dialogs.setAccess(&access);

  qv::app::MainWindow& window = application.CreateWindow();
  prompter.setParent(&window);
  passwords.setParent(&window);
  dialogs.setParent(&window);
  alarms.setParent(&window);
  prompter.setStatusSink([&window](const QString& text) {
    if (text.isEmpty())
      window.statusBar()->clearMessage();
    else
      window.statusBar()->showMessage(text);
  });
  QObject::connect(&instance, &qv::app::SingleInstance::received, &window,
                   &qv::app::MainWindow::HandleLaunchText);
  // A logout, a closed terminal or Ctrl+C ends the program as Exit would, without questions.
  qv::app::SignalWatcher watcher;
  bool ended = false;
  QObject::connect(&watcher, &qv::app::SignalWatcher::received, &window, [&] {
    application.EndSession(true);
    ended = true;
    QApplication::exit(0);
  });
  QObject::connect(&qt, &QGuiApplication::commitDataRequest, &window,
                   [&application](QSessionManager&) { application.EndSession(false); });
  application.Start(arguments);
  // Alarms due while the program was closed are raised now, later ones when their time comes.
  qv::app::AlarmScheduler scheduler(
      settings, clock, [&settings] { settings.sync(); },
      [&window](const QString& text) { window.HandleLaunchText(text); });
  if (!ended) scheduler.Start();
  // A signal taken while the start-up's own dialogs ran has ended the session already.
  int result = ended ? 0 : QApplication::exec();
  application.Shutdown();
  settings.sync();
  return result;
}
