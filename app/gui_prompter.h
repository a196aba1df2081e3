#pragma once
// Message boxes, questions, the wait cursor and progress texts of the desktop program.

#include <QPointer>
#include <QWidget>
#include <functional>

#include "platform/prompter.h"

namespace qv::app {

class GuiPrompter : public Prompter {
 public:
  // Message boxes are centred on `parent` (when set); progress texts go to `status`.
  void setParent(QWidget* parent) { parent_ = parent; }
  void setStatusSink(std::function<void(const QString&)> status) { status_ = std::move(status); }

  void message(std::string_view text, std::string_view caption, Icon icon) override;
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override;
  void progress(std::string_view text) override;
  void busy(bool on) override;

 private:
  QPointer<QWidget> parent_;
  std::function<void(const QString&)> status_;
  int busy_depth_ = 0;
};

}  // namespace qv::app
