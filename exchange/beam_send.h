#pragma once
// Beaming: a whole database file, the current record, or the records of the current view, each
// sent as one OBEX object.

#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "engine/database.h"
#include "exchange/obex_client.h"

namespace qv {

inline constexpr const char* kBeamCreator = "Qvnt";

// One object to beam: its body, Name and Description.
struct BeamObject {
  Bytes body;
  std::u16string name;
  std::u16string description;
};

// Reads a whole file; nothing after showing why.
std::optional<Bytes> ReadFileIntoBuf(const std::string& path, Prompter& prompter);
// A database file, named after the file. Nothing when it cannot be read (a 2-byte CR LF file
// counts as unreadable, as it did on the handheld).
std::optional<BeamObject> DatabaseFileObject(const std::string& path, Prompter& prompter);
// Record `number` as stored: "%lS.qvr", "%lS: Record %u" counted from 1. Nothing for an empty
// record or a number out of range.
std::optional<BeamObject> RecordObject(const Database& db, std::uint32_t number);
// The records of the current view: a 2-byte count, then per record a 2-byte length and its
// bytes, all big-endian. Nothing for an empty view.
std::optional<BeamObject> ViewObject(const Database& db);
// Builds the Description, Name, creator code, Length and Body items and sends them.
int SendVcard(const BeamObject& object, std::string_view creator, const ObexSendOptions& options,
              CancelEvent& cancel, Prompter& prompter);

// Runs sends on a thread of their own, one at a time; `done` gets "START_LISTENING" after
// every send that had something to send.
class BeamSender {
 public:
  BeamSender(Prompter& prompter, std::function<void(std::string_view)> post);
  ~BeamSender();
  // Starts sending what `build` makes (on the send thread); false when the previous send did not
  // end within 5,000 ms (shown). `file` picks the failure text: "Error sending File" or
  // "Error sending Record".
  bool Start(std::function<std::optional<BeamObject>()> build, bool file,
             const ObexSendOptions& options);
  // Waits for the running send to end.
  void Wait();
  CancelEvent& cancel() { return cancel_; }
  int last_result() const { return result_; }

 private:
  Prompter& prompter_;
  std::function<void(std::string_view)> post_;
  CancelEvent cancel_;
  std::atomic<bool> busy_{false};
  std::atomic<int> result_{0};
  std::thread thread_;
};

}  // namespace qv
