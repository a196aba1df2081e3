#pragma once
#include "platform/prompter.h"

namespace qv::cli {

// Messages go to standard error as "CAPTION: text". Questions take the --yes/--no answer when
// one was given, else ask on a terminal, else (no terminal) take the cautious answer.
class CliPrompter : public Prompter {
 public:
  enum class Preset { None, Yes, No };
  void message(std::string_view text, std::string_view caption, Icon icon) override;
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override;
  void progress(std::string_view text) override;
  bool shows_progress() const override { return verbose; }
  void busy(bool) override {}

  Preset preset = Preset::None;
  bool verbose = false;  // show progress texts
};

}  // namespace qv::cli
