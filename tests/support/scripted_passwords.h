#pragma once
// A password dialog for tests: answers from a queue (nothing = Cancel) and records each call.

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "platform/password_prompter.h"

namespace qv::test {

class ScriptedPasswords : public PasswordPrompter {
 public:
  struct Call {
    PasswordMode mode;
    std::string title;
    std::string prompt;
    int attempt;
  };

  std::optional<std::string> AskPassword(PasswordMode mode, std::string_view title,
                                         std::string_view prompt, int attempt) override {
    calls.push_back({mode, std::string(title), std::string(prompt), attempt});
    if (entries.empty()) return std::nullopt;
    auto entry = entries.front();
    entries.pop_front();
    return entry;
  }

  // Queues typed entries; std::nullopt stands for Cancel. An empty queue cancels.
  ScriptedPasswords& Type(std::optional<std::string> entry) {
    entries.push_back(std::move(entry));
    return *this;
  }

  std::deque<std::optional<std::string>> entries;
  std::vector<Call> calls;
};

}  // namespace qv::test
