#pragma once
// A Prompter for the beaming threads: each call is carried out by the program's own prompter on
// the interface thread, while the calling thread waits for the answer.

#include <QObject>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "platform/prompter.h"

namespace qv::app {

class CrossThreadPrompter : public Prompter {
 public:
  // `context` lives on the interface thread; `inner` is only used there.
  CrossThreadPrompter(QObject* context, Prompter& inner) : context_(context), inner_(inner) {}
  ~CrossThreadPrompter() override { Close(); }

  void message(std::string_view text, std::string_view caption, Icon icon) override;
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override;
  void progress(std::string_view text) override;
  void busy(bool) override {}  // a thread's wait cursor would cover the whole program

  // From now on nothing waits for the interface thread: pending and later calls return at once
  // (questions answered No or Cancel), so a thread being stopped is never held by a dialog.
  void Close();
  // Calls wait for the interface thread again (a new listen or send thread starts).
  void Open();

 private:
  // Runs `call` on the interface thread and waits for it, unless closed.
  void RunThere(std::function<void(Prompter&)> call);

  QObject* context_;
  Prompter& inner_;
  std::mutex mutex_;
  std::condition_variable done_;
  bool closed_ = false;
  int generation_ = 0;  // calls queued before a Close are dropped
};

}  // namespace qv::app
