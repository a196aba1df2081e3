// qvdb: the command-line tool over the same libraries as the application.

#include <QCoreApplication>
#include <QStringList>
#include <iostream>

#include "cli/cli_context.h"
#include "cli/command.h"

namespace {

std::vector<qv::cli::Command> AllCommands() {
  std::vector<qv::cli::Command> all;
  for (auto group :
       {qv::cli::DatabaseCommands, qv::cli::RecordCommands, qv::cli::ProcessingCommands,
        qv::cli::ViewCommands, qv::cli::ExchangeCommands, qv::cli::TransferCommands,
        qv::cli::SecurityCommands, qv::cli::FieldCommands, qv::cli::BeamCommands,
        qv::cli::PluginCommands, qv::cli::AlarmCommands, qv::cli::LinkCommands}) {
    auto commands = group();
    all.insert(all.end(), commands.begin(), commands.end());
  }
  return all;
}

int Usage(const std::vector<qv::cli::Command>& commands, std::ostream& out) {
  out << "usage: qvdb COMMAND [ARGUMENTS] [--date-format P] [--time-format P] [--decimal-comma]\n\n"
         "commands:\n";
  for (const auto& c : commands) out << "  qvdb " << c.synopsis << '\n';
  out << "\n\"qvdb COMMAND --help\" says what a command does and shows an example. A FILE of "
         "\"-\"\n"
         "reads standard input or writes standard output.\n";
  return qv::cli::kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  // No application object: no command runs an event loop, and making one (the locale files, an
  // event dispatcher) costs every command half a millisecond. The C library stays in the "C"
  // locale, so numbers always use ".".
  QCoreApplication::setApplicationName("qvdb");
  QCoreApplication::setApplicationVersion("3.0");
  const auto commands = AllCommands();
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  if (arguments.size() < 2) return Usage(commands, std::cerr);
  QString name = arguments.at(1);
  if (name == "help" && arguments.size() > 2) {  // qvdb help COMMAND
    name = arguments.at(2);
    arguments = {arguments.at(0), name, "--help"};
  } else if (name == "help" || name == "--help" || name == "-h") {
    Usage(commands, std::cout);
    return qv::cli::kOk;
  }
  if (name == "--version") {
    std::cout << "qvdb 3.0\n";
    return qv::cli::kOk;
  }
  for (const auto& c : commands) {
    if (name.toStdString() != c.name) continue;
    qv::cli::CliContext context;
    context.command = &c;
    QStringList rest = arguments;
    rest.removeAt(1);  // the parser expects the program name first
    int code = c.run(context, rest);
    return context.help_shown ? qv::cli::kOk : code;
  }
  std::cerr << "Error: unknown command '" << name.toStdString() << "'\n";
  return Usage(commands, std::cerr);
}
