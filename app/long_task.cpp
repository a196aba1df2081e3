#include "app/long_task.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProgressDialog>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

namespace qv::app {

namespace {

struct Message {
  std::string text, caption;
  Icon icon;
};

// What the worker and the window share.
struct Shared {
  std::mutex mutex;
  std::condition_variable finished_signal;
  std::string progress;
  std::vector<Message> messages;
  bool finished = false;
};

// The worker's prompter: keeps the latest progress text and the messages for later; a question
// cannot be put to the user from a worker, so it gets the cautious answer.
class RelayPrompter : public Prompter {
 public:
  explicit RelayPrompter(Shared& shared) : shared_(shared) {}
  void message(std::string_view text, std::string_view caption, Icon icon) override {
    std::lock_guard lock(shared_.mutex);
    shared_.messages.push_back({std::string(text), std::string(caption), icon});
  }
  Answer ask(std::string_view, std::string_view, Buttons buttons, Icon) override {
    return buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel ? Answer::No
                                                                        : Answer::Cancel;
  }
  void progress(std::string_view text) override {
    std::lock_guard lock(shared_.mutex);
    shared_.progress.assign(text);
  }
  void busy(bool) override {}

 private:
  Shared& shared_;
};

constexpr int kShowAfterMs = 500;

}  // namespace

LongTasks::~LongTasks() {
  for (std::thread& t : abandoned_) t.join();
}

bool LongTasks::Run(QWidget* parent, const QString& title, LongWork work, Prompter& shown) {
  auto shared = std::make_shared<Shared>();
  std::thread worker([shared, work = std::move(work)] {
    RelayPrompter prompter(*shared);
    work(prompter);
    std::lock_guard lock(shared->mutex);
    shared->finished = true;
    shared->finished_signal.notify_all();
  });

  QApplication::setOverrideCursor(Qt::WaitCursor);
  QProgressDialog dialog(title, QObject::tr("Cancel"), 0, 0, parent);
  dialog.setWindowTitle(QObject::tr("Quorvant"));
  dialog.setWindowModality(Qt::WindowModal);
  dialog.setMinimumDuration(kShowAfterMs);
  dialog.setAutoReset(false);
  dialog.setMinimumWidth(360);
  QElapsedTimer clock;
  clock.start();
  bool finished = false;
  while (!finished && !dialog.wasCanceled()) {
    std::unique_lock lock(shared->mutex);
    finished = shared->finished_signal.wait_for(lock, std::chrono::milliseconds(40),
                                                [&] { return shared->finished; });
    QString text = QString::fromStdString(shared->progress);
    lock.unlock();
    if (finished) break;
    if (clock.elapsed() >= kShowAfterMs && !dialog.isVisible()) dialog.show();
    if (!text.isEmpty() && text != title) dialog.setLabelText(title + "\n" + text);
    // Until the modal dialog is up, typing and clicks wait: they must not reach the window.
    QApplication::processEvents(dialog.isVisible() ? QEventLoop::AllEvents
                                                   : QEventLoop::ExcludeUserInputEvents);
  }
  QApplication::restoreOverrideCursor();
  if (!finished) {
    abandoned_.push_back(std::move(worker));
    return false;
  }
  worker.join();
  for (const Message& m : shared->messages) shown.message(m.text, m.caption, m.icon);
  return true;
}

}  // namespace qv::app
