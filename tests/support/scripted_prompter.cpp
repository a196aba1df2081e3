#include "tests/support/scripted_prompter.h"

namespace qv::test {

void ScriptedPrompter::message(std::string_view text, std::string_view caption, Icon icon) {
  calls_.push_back({PromptCall::Message, std::string(text), std::string(caption), icon});
}

Answer ScriptedPrompter::ask(std::string_view text, std::string_view caption, Buttons, Icon icon) {
  calls_.push_back({PromptCall::Question, std::string(text), std::string(caption), icon});
  if (answers_.empty()) return default_answer;
  qv::Answer a = answers_.front();
  answers_.pop_front();
  return a;
}

void ScriptedPrompter::progress(std::string_view text) {
  calls_.push_back({PromptCall::Progress, std::string(text), std::string(), Icon::None});
}

namespace {
std::vector<std::string> TextsOf(const std::vector<PromptCall>& calls, PromptCall::Kind kind) {
  std::vector<std::string> out;
  for (const auto& c : calls)
    if (c.kind == kind) out.push_back(c.text);
  return out;
}
}  // namespace

std::vector<std::string> ScriptedPrompter::Messages() const { return TextsOf(calls_, PromptCall::Message); }
std::vector<std::string> ScriptedPrompter::Questions() const { return TextsOf(calls_, PromptCall::Question); }
std::vector<std::string> ScriptedPrompter::Progress() const { return TextsOf(calls_, PromptCall::Progress); }

}  // namespace qv::test
