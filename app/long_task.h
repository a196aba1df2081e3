#pragma once
// Work that may take longer than a moment (import, export, sorting, recalculation) runs on a
// worker thread while a progress dialog with Cancel keeps the window alive. The work gets a
// prompter of its own: its progress texts reach the dialog, its messages are shown afterwards.

#include <QString>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/prompter.h"

class QWidget;

namespace qv::app {

// The work of a long task; it must touch nothing the window uses while it runs (work on a copy).
using LongWork = std::function<void(Prompter& prompter)>;

class LongTasks {
 public:
  LongTasks() = default;
  LongTasks(const LongTasks&) = delete;
  LongTasks& operator=(const LongTasks&) = delete;
  // Waits for the work the user cancelled, so nothing runs on after the program ends.
  ~LongTasks();

  // Runs `work`; the dialog appears when it takes longer than half a second. True when the
  // work finished, false when the user cancelled (its results must be dropped; the thread is
  // left to finish on its own). Messages of finished work are replayed through `shown`.
  bool Run(QWidget* parent, const QString& title, LongWork work, Prompter& shown);

 private:
  std::vector<std::thread> abandoned_;
};

}  // namespace qv::app
