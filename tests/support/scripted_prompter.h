#pragma once
// A Prompter for tests: records every call and answers questions from a queue.

#include <deque>
#include <string>
#include <vector>

#include "platform/prompter.h"

namespace qv::test {

struct PromptCall {
  enum Kind { Message, Question, Progress } kind;
  std::string text;
  std::string caption;
  Icon icon = Icon::None;
};

class ScriptedPrompter : public Prompter {
 public:
  void message(std::string_view text, std::string_view caption, Icon icon) override;
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override;
  void progress(std::string_view text) override;
  void busy(bool on) override { busy_ = on; }

  // Queues the answers to the next questions; with the queue empty, questions get
  // `default_answer`.
  void Queue(qv::Answer answer) { answers_.push_back(answer); }
  qv::Answer default_answer = qv::Answer::No;

  const std::vector<PromptCall>& calls() const { return calls_; }
  std::vector<std::string> Messages() const;   // texts of message boxes, in order
  std::vector<std::string> Questions() const;  // texts of questions, in order
  std::vector<std::string> Progress() const;   // progress texts, in order
  void Clear() { calls_.clear(); }
  bool busy() const { return busy_; }

 private:
  std::vector<PromptCall> calls_;
  std::deque<qv::Answer> answers_;
  bool busy_ = false;
};

}  // namespace qv::test
