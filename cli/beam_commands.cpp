// qvdb beam send, beam receive: the beaming commands over OBEX on TCP.

#include <signal.h>

#include <atomic>
#include <iostream>
#include <map>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "engine/text.h"
#include "exchange/beam_receive.h"
#include "exchange/beam_send.h"
#include "exchange/obex_listener.h"
#include "platform/qt/qt_paths.h"
#include "platform/qt/qt_settings.h"

namespace qv::cli {

namespace {

constexpr int kDefaultPatienceSeconds = 10;

// Passes everything on and counts the messages, so a transfer that showed a problem exits 1.
class CountingPrompter : public Prompter {
 public:
  explicit CountingPrompter(Prompter& inner) : inner_(inner) {}
  void message(std::string_view text, std::string_view caption, Icon icon) override {
    ++messages;
    inner_.message(text, caption, icon);
  }
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override {
    return inner_.ask(text, caption, buttons, icon);
  }
  void progress(std::string_view text) override { inner_.progress(text); }
  void busy(bool on) override { inner_.busy(on); }
  int messages = 0;

 private:
  Prompter& inner_;
};

// The records as the file stores them: records held deciphered in memory go out enciphered,
// exactly as the handheld sends them.
bool UseStoredBytes(Database& db) {
  auto image = ReadWholeFile(db.path);
  Database stored;
  std::uint32_t bad = 0;
  if (!image || ParseDatabase(*image, stored, bad) != ReadError::None) return false;
  std::map<std::uint32_t, const RecordData*> by_uid;
  for (const RecordSlot& r : stored.records) by_uid[r.uid] = &r.data;
  for (RecordSlot& r : db.records)
    if (auto found = by_uid.find(r.uid); found != by_uid.end()) r.data = *found->second;
  return true;
}

int Send(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("send", "");
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"to", "The receiving peer.", "HOST[:PORT]"});
  parser.addOption({"record", "Beam record N (from 1).", "N"});
  parser.addOption({"view", "Beam the records the current view shows."});
  parser.addOption({"wait", "Seconds to look for the peer (default 10).", "SECONDS"});
  const char* usage = "beam send FILE --to HOST[:PORT] [--record N | --view] [--wait SECONDS]";
  if (!context.Parse(parser, arguments, 2, usage, 2)) return kUsage;
  auto peer = ParseEndpoint(parser.value("to").toStdString(), kObexPort);
  bool ok_wait = true;
  int wait = parser.isSet("wait") ? parser.value("wait").toInt(&ok_wait) : kDefaultPatienceSeconds;
  if (!parser.isSet("to") || !peer || peer->host.empty() || !ok_wait || wait <= 0 ||
      (parser.isSet("record") && parser.isSet("view"))) {
    context.Error(std::string("usage: qvdb ") + usage);
    return kUsage;
  }
  const std::string path = parser.positionalArguments().at(1).toStdString();
  // The Beam Data permission is checked before anything is sent.
  auto db = context.Open(path);
  if (!db || !UseStoredBytes(*db)) return kFailed;
  CountingPrompter prompter(context.prompter);
  std::optional<BeamObject> object;
  if (parser.isSet("record")) {
    bool ok = false;
    uint n = parser.value("record").toUInt(&ok);
    if (!ok || n == 0 || n > db->count()) {
      context.Error("no record " + parser.value("record").toStdString());
      return kFailed;
    }
    object = RecordObject(*db, n - 1);
    if (!object) context.Error("record " + std::to_string(n) + " is empty; nothing was sent");
  } else if (parser.isSet("view")) {
    object = ViewObject(*db);
    if (!object) context.Error("the view shows no records; nothing was sent");
  } else {
    object = DatabaseFileObject(path, prompter);
  }
  if (!object) return kFailed;
  ObexSendOptions options;
  options.peer = *peer;
  options.find_patience_ms = wait * 1000;
  CancelEvent cancel;
  int result = SendVcard(*object, kBeamCreator, options, cancel, prompter);
  if (result != 1)
    prompter.message(
        StringPrintf(object->name.find(u".qv") == std::u16string::npos ? "%s: Error sending File"
                                                                       : "%s: Error sending Record",
                     "SendNoteThread"),
        "Error", Icon::Error);
  if (prompter.messages > 0) return kFailed;
  std::cout << "sent " << Utf16ToUtf8(object->name) << " (" << object->body.size() << " bytes)\n";
  return kOk;
}

// SIGINT, SIGTERM and SIGHUP are held and taken between connections, so a signal ends the
// listener in order rather than in the middle of a transfer.
sigset_t StopSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int s : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, s);
  return set;
}

int Receive(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("receive", "");
  parser.addOption({"listen", "Address and port to listen on.", "ADDR:PORT"});
  parser.addOption({"once", "Stop after one object."});
  parser.addOption({"into", "The data folder to store databases in.", "FOLDER"});
  const char* usage = "beam receive [--listen ADDR:PORT] [--once] [--yes|--no] [--into FOLDER]";
  if (!context.Parse(parser, arguments, 1, usage, 1)) return kUsage;
  QtSettings settings;
  QtPaths paths;
  ListenOptions options = ListenOptionsFromSettings(settings, paths.TempFolder());
  if (parser.isSet("listen")) {
    auto endpoint = ParseEndpoint(parser.value("listen").toStdString(), options.bind.port);
    if (!endpoint) {
      context.Error(std::string("usage: qvdb ") + usage);
      return kUsage;
    }
    options.bind = *endpoint;
  }
  std::string folder =
      parser.isSet("into") ? parser.value("into").toStdString() : paths.DataFolder();
  // Databases opened to take records check Open Database only, not this command's Beam Data.
  context.command = nullptr;
  ReceiveHost host{context.prompter,
                   context.clock,
                   folder,
                   nullptr,
                   [&](const std::string& path) { return context.Open(path); },
                   [&](Database& db) { return context.Save(db); },
                   {},
                   {}};
  std::atomic<bool> stop{false};
  int stored = 0;
  const bool once = parser.isSet("once");
  const sigset_t stop_signals = StopSignals();
  sigprocmask(SIG_BLOCK, &stop_signals, nullptr);
  auto idle = [&](int ms) {
    timespec wait{ms / 1000, (ms % 1000) * 1000000L};
    if (sigtimedwait(&stop_signals, nullptr, &wait) > 0) stop = true;
    return stop.load();
  };
  options.on_bound = [&](std::uint16_t port) {
    std::cerr << "listening on " << options.bind.host << ':' << port << '\n';
  };
  auto on_object = [&](const ReceivedObject& object, const std::string& temp) {
    std::cout << "received " << Utf16ToUtf8(object.name) << " (" << object.length << " bytes)\n"
              << std::flush;
    stored += HandleReceivedObject(host, object, temp);
    if (once) stop = true;
  };
  bool ok = ListenLoop(options, stop, idle, context.prompter, on_object, {});
  sigprocmask(SIG_UNBLOCK, &stop_signals, nullptr);
  if (!ok) return kFailed;
  return once && stored == 0 ? kFailed : kOk;
}

constexpr const char* kBeamUsage =
    "beam send FILE --to HOST[:PORT] [--record N | --view] [--wait SECONDS] | "
    "beam receive [--listen ADDR:PORT] [--once] [--yes|--no] [--into FOLDER]";

int Beam(CliContext& context, const QStringList& arguments) {
  const QString verb = arguments.size() > 1 ? arguments.at(1) : QString();
  if (verb == "send") return Send(context, arguments);
  if (verb == "receive") return Receive(context, arguments);
  // --help, or no sub-command: the parser answers or reports the usage.
  QCommandLineParser parser;
  parser.addPositionalArgument("send|receive", "What to do.");
  if (!context.Parse(parser, arguments, 1, kBeamUsage, 1)) return kUsage;
  return context.UsageError("choose send or receive");
}

}  // namespace

std::vector<Command> BeamCommands() {
  return {{"beam", kBeamUsage, Beam,
           "Beams a database, one record or the records of the current view to an OBEX peer "
           "over TCP, or listens for what a peer beams: a database is stored (or merged into "
           "the one of that name), records are added to the database they name.",
           "beam send Stock.PDB --to 127.0.0.1:6500 --record 3"}};
}

}  // namespace qv::cli
