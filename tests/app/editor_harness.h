#pragma once
// The application with its real screens (record editor, properties, field editor) over scripted
// message boxes and password prompts, and a helper that acts on the next modal dialog.

#include <QApplication>
#include <QDir>
#include <QTimer>
#include <functional>

#include "app/security_gate.h"
#include "app/widget_dialogs.h"
#include "tests/app/app_fakes.h"
#include "tests/support/scripted_passwords.h"

namespace qv::test {

struct EditorHarness {
  EditorHarness() {
    dialogs.setWorkspace(&application.workspace());
    dialogs.setAccess(&access);
    // A first database to start on, so no start chooser waits for an answer.
    QDir().mkpath(QString::fromStdString(paths.DataFolder()));
    auto first = SampleDatabase("First");
    first->path = paths.DataFolder() + "/First.PDB";
    SaveDatabase(*first, clock);
    settings.values["LastFileUsed"] = first->path;
    application.Start({});
    application.workspace().options = FormatOptions{};  // M/d/yyyy, h:mm:ss tt
  }
  TempPaths paths;
  MemorySettings settings;
  FixedClock clock;
  ScriptedPrompter prompter;
  ScriptedPasswords passwords;
  app::WidgetDialogs dialogs;
  app::SecurityAccessGate access{passwords};
  app::NoFormatConverter converter;
  app::NoNotificationHandler alarms;
  app::Application application{app::ApplicationServices{settings, paths, clock, prompter, dialogs,
                                                        access, converter, alarms}};

  Workspace& workspace() { return application.workspace(); }
  Database& db() { return workspace().current(); }
  // Puts a database into the current slot as if it had been opened.
  void Install(std::unique_ptr<Database> db) {
    db->loaded = true;
    workspace().ReplaceCurrent(std::move(db));
    application.window().panel()->Refresh();
  }
};

// Runs `act` on the next modal dialog of type T once it is shown; `act` closes it (a dialog it
// leaves open is rejected).
template <typename T>
void WhenShown(std::function<void(T*)> act, int tries = 2000) {
  QTimer::singleShot(5, [act, tries] {
    if (auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget())) {
      act(dialog);
      // A check that failed inside `act` must not leave the dialog waiting for ever.
      if (dialog->isVisible()) dialog->reject();
    } else if (tries > 0) {
      WhenShown<T>(act, tries - 1);
    }
  });
}

}  // namespace qv::test
