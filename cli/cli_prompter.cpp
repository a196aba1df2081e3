#include "cli/cli_prompter.h"

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <iostream>
#include <string>

namespace qv::cli {

namespace {

// Texts that carry their own caption ("ERROR: Cannot Open File: ...") are not captioned twice.
bool CaptionedAlready(std::string_view text, std::string_view caption) {
  if (text.size() <= caption.size() || text[caption.size()] != ':') return false;
  for (std::size_t i = 0; i < caption.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(text[i])) !=
        std::tolower(static_cast<unsigned char>(caption[i])))
      return false;
  return true;
}

}  // namespace

void CliPrompter::message(std::string_view text, std::string_view caption, Icon) {
  if (CaptionedAlready(text, caption))
    std::cerr << text << '\n';
  else
    std::cerr << caption << ": " << text << '\n';
}

Answer CliPrompter::ask(std::string_view text, std::string_view caption, Buttons buttons, Icon) {
  bool yes_no = buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel;
  Answer positive = yes_no ? Answer::Yes : Answer::Ok;
  Answer negative = buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
  if (preset == Preset::Yes) return positive;
  if (preset == Preset::No) return yes_no ? Answer::No : Answer::Cancel;
  std::cerr << caption << ": " << text;
  if (!isatty(STDIN_FILENO)) {
    std::cerr << " [no terminal: answered no]\n";
    return negative;
  }
  std::cerr << (yes_no ? " [y/n] " : " [ok/cancel] ") << std::flush;
  std::string line;
  if (!std::getline(std::cin, line)) return negative;
  if (!line.empty() && (line[0] == 'y' || line[0] == 'Y' || line[0] == 'o' || line[0] == 'O'))
    return positive;
  if (buttons == Buttons::YesNoCancel && !line.empty() && (line[0] == 'n' || line[0] == 'N'))
    return Answer::No;
  return negative;
}

void CliPrompter::progress(std::string_view text) {
  if (verbose) std::cerr << text << '\n';
}

}  // namespace qv::cli
