#pragma once
// Start-up and shut-down of the program, in their fixed order, over injected services so tests
// run the same sequence with scripted dialogs and in-memory settings.

#include <memory>
#include <string>
#include <vector>

#include "app/app_context.h"
#include "app/changes_lock.h"
#include "app/main_window.h"
#include "platform/clock.h"

namespace qv::app {

struct ApplicationServices {
  Settings& settings;
  const Paths& paths;
  const Clock& clock;
  Prompter& prompter;
  Dialogs& dialogs;
  AccessGate& access;
  FormatConverter& converter;
  NotificationHandler& alarms;
};

class Application {
 public:
  explicit Application(ApplicationServices services);
  ~Application();

  // The main window, titled "Quorvant" (the first step of Start, callable before it so the
  // prompts can be parented to the window).
  MainWindow& CreateWindow();
  // Everything up to the first screen: the window, Version, the data folder, the stack, the
  // command line (arguments after the program name), the first database.
  void Start(const std::vector<std::string>& arguments);
  // After the event loop: every database closed silently (modified ones saved), the
  // preferences written.
  void Shutdown();
  // Ended from outside with nobody to ask (a signal, the session manager): the close-with-save
  // rule of Exit without its questions, changes it would ask about kept for recovery. When
  // `quitting`, LastFileUsed is written too and the caller ends the event loop.
  void EndSession(bool quitting);
  ChangesLock& changes_lock() { return *changes_lock_; }

  Workspace& workspace() { return workspace_; }
  MainWindow& window() { return *window_; }

 private:
  bool RestoreRecovery();

  ApplicationServices s_;
  Workspace workspace_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<ChangesLock> changes_lock_;
  bool shut_down_ = false;
  bool kept_for_recovery_ = false;  // by a commit-data request, while the program ran on
  bool ended_from_outside_ = false;
};

}  // namespace qv::app
