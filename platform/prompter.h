#pragma once
// Every message box, question, progress text and wait cursor goes through this one interface,
// so the same core code runs under the GUI, the command line and the tests.

#include <string_view>

namespace qv {

enum class Icon { None, Information, Exclamation, Warning, Error, Question };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Answer { Ok, Cancel, Yes, No };

class Prompter {
 public:
  virtual ~Prompter() = default;
  virtual void message(std::string_view text, std::string_view caption, Icon icon) = 0;
  virtual Answer ask(std::string_view text, std::string_view caption, Buttons buttons,
                     Icon icon) = 0;
  // The wait notice of long operations.
  virtual void progress(std::string_view text) = 0;
  // Whether progress texts are shown at all: loops over every record skip composing them if not.
  virtual bool shows_progress() const { return true; }
  // The wait cursor.
  virtual void busy(bool on) = 0;
};

// Says nothing and answers every question with its first button; for batch work.
class SilentPrompter : public Prompter {
 public:
  void message(std::string_view, std::string_view, Icon) override {}
  Answer ask(std::string_view, std::string_view, Buttons buttons, Icon) override {
    return buttons == Buttons::Ok || buttons == Buttons::OkCancel ? Answer::Ok : Answer::Yes;
  }
  void progress(std::string_view) override {}
  bool shows_progress() const override { return false; }
  void busy(bool) override {}
};

}  // namespace qv
