#include "app/cross_thread_prompter.h"

#include <QThread>
#include <memory>
#include <string>

namespace qv::app {

namespace {

Answer SafestAnswer(Buttons buttons) {
  switch (buttons) {
    case Buttons::Ok:
      return Answer::Ok;
    case Buttons::YesNo:
      return Answer::No;
    default:
      return Answer::Cancel;
  }
}

}  // namespace

void CrossThreadPrompter::Close() {
  {
    std::lock_guard lock(mutex_);
    closed_ = true;
    ++generation_;
  }
  done_.notify_all();
}

void CrossThreadPrompter::Open() {
  std::lock_guard lock(mutex_);
  closed_ = false;
}

void CrossThreadPrompter::RunThere(std::function<void(Prompter&)> call) {
  if (QThread::currentThread() == context_->thread()) {
    call(inner_);
    return;
  }
  int generation = 0;
  {
    std::lock_guard lock(mutex_);
    if (closed_) return;
    generation = generation_;
  }
  // Shared, so a call that runs after the waiter gave up still has somewhere to write.
  auto finished = std::make_shared<bool>(false);
  QMetaObject::invokeMethod(
      context_,
      [this, call = std::move(call), finished, generation] {
        {
          std::lock_guard lock(mutex_);
          if (closed_ || generation != generation_) return;
        }
        call(inner_);
        {
          std::lock_guard lock(mutex_);
          *finished = true;
        }
        done_.notify_all();
      },
      Qt::QueuedConnection);
  std::unique_lock lock(mutex_);
  done_.wait(lock, [&] { return *finished || closed_; });
}

void CrossThreadPrompter::message(std::string_view text, std::string_view caption, Icon icon) {
  RunThere([text = std::string(text), caption = std::string(caption), icon](Prompter& p) {
    p.message(text, caption, icon);
  });
}

Answer CrossThreadPrompter::ask(std::string_view text, std::string_view caption, Buttons buttons,
                                Icon icon) {
  auto answer = std::make_shared<Answer>(SafestAnswer(buttons));
  RunThere([this, text = std::string(text), caption = std::string(caption), buttons, icon,
            answer](Prompter& p) {
    Answer given = p.ask(text, caption, buttons, icon);
    std::lock_guard lock(mutex_);
    *answer = given;
  });
  std::lock_guard lock(mutex_);
  return *answer;
}

void CrossThreadPrompter::progress(std::string_view text) {
  // Progress never waits: the text is shown when the interface thread gets to it.
  std::string copy(text);
  QMetaObject::invokeMethod(
      context_, [this, copy] { inner_.progress(copy); }, Qt::QueuedConnection);
}

}  // namespace qv::app
