#include "cli/usage.h"

#include <ostream>

namespace qv::cli {

namespace {

// "[NAME]": an optional positional argument, not an option group.
bool IsOptionalWord(const QString& word) {
  if (word.size() < 3 || word.front() != '[' || word.back() != ']') return false;
  if (word.at(1) < 'A' || word.at(1) > 'Z') return false;
  for (qsizetype i = 2; i + 1 < word.size(); ++i) {
    const QChar c = word.at(i);
    if (!((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '='))
      return false;
  }
  return true;
}

}  // namespace

int MaxPositionalOf(std::string_view usage) {
  QStringList words = QString::fromUtf8(usage.data(), static_cast<qsizetype>(usage.size()))
                          .split(' ', Qt::SkipEmptyParts);
  if (!words.isEmpty()) words.removeFirst();  // the command's name
  int count = 0;
  int depth = 0;
  bool option_value = false;  // the word after an option is its value
  for (const QString& word : words) {
    const bool top = depth == 0;
    for (QChar c : word) depth += (c == '[' || c == '(') - (c == ']' || c == ')');
    if (!top) continue;
    if (word.front() == '[' || word.front() == '(') {
      if (IsOptionalWord(word)) ++count;
      option_value = false;
      continue;
    }
    if (word.endsWith("...") || word.contains('|')) return kAnyCount;
    if (word.startsWith('-')) {
      option_value = true;
    } else if (option_value) {
      option_value = false;
    } else {
      ++count;
    }
  }
  return count;
}

namespace {

// The text in lines of at most 78 characters, broken between words.
std::string Wrapped(const std::string& text) {
  std::string out, line;
  for (const QString& word : QString::fromStdString(text).split(' ', Qt::SkipEmptyParts)) {
    std::string w = word.toStdString();
    if (!line.empty() && line.size() + 1 + w.size() > 78) {
      out += line + '\n';
      line.clear();
    }
    line += (line.empty() ? "" : " ") + w;
  }
  return out + line;
}

}  // namespace

void PrintCommandHelp(const Command& command, const QCommandLineParser& parser, std::ostream& out) {
  out << "usage: qvdb " << command.synopsis << "\n\n";
  if (!command.description.empty()) out << Wrapped(command.description) << "\n\n";
  if (!command.example.empty()) out << "Example:\n  qvdb " << command.example << "\n\n";
  // Qt's own page starts with its usage line and the positional list; the options follow.
  QString help = parser.helpText();
  qsizetype options = help.indexOf("Options:");
  qsizetype arguments = help.indexOf("Arguments:");
  if (options >= 0) {
    QString text = help.mid(options, arguments > options ? arguments - options : -1);
    out << text.trimmed().toStdString() << '\n';
  }
}

}  // namespace qv::cli
