#include "exchange/beam_send.h"

#include <cerrno>
#include <chrono>
#include <filesystem>

#include "engine/text.h"
#include "exchange/obex_listener.h"

namespace qv {

namespace {

constexpr auto kSendPatience = std::chrono::milliseconds(5000);

void Put16(Bytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value >> 8));
  out.push_back(static_cast<std::uint8_t>(value));
}

}  // namespace

std::optional<Bytes> ReadFileIntoBuf(const std::string& path, Prompter& prompter) {
  auto bytes = ReadWholeFile(path);
  if (!bytes) {
    prompter.message(
        StringPrintf("%s: Error opening file %s - %d", "ReadFileIntoBuf", path.c_str(), errno),
        "Error", Icon::Error);
    return std::nullopt;
  }
  return bytes;
}

std::optional<BeamObject> DatabaseFileObject(const std::string& path, Prompter& prompter) {
  if (!TestForFile(path)) {
    prompter.message(StringPrintf("%s: Error opening file - %d", "SendNoteThread", errno), "Error",
                     Icon::Error);
    return std::nullopt;
  }
  auto body = ReadFileIntoBuf(path, prompter);
  if (!body) return std::nullopt;
  if (*body == Bytes{'\r', '\n'}) return std::nullopt;  // unreadable, as on the handheld
  std::string name = std::filesystem::path(path).filename().string();
  return BeamObject{std::move(*body), Utf8ToUtf16(name), Utf8ToUtf16(name)};
}

std::optional<BeamObject> RecordObject(const Database& db, std::uint32_t number) {
  if (number >= db.count() || db.records[number].data.empty()) return std::nullopt;
  std::string name = Cp1252ToUtf8(db.header.Name());
  return BeamObject{db.records[number].data, Utf8ToUtf16(name + ".qvr"),
                    Utf8ToUtf16(StringPrintf("%s: Record %u", name.c_str(), number + 1))};
}

std::optional<BeamObject> ViewObject(const Database& db) {
  if (db.visible.empty() || db.visible.size() > kMaxDataRecords) return std::nullopt;
  Bytes body;
  Put16(body, db.visible.size());
  for (std::uint32_t number : db.visible) {
    if (number >= db.count()) return std::nullopt;
    const Bytes& data = db.records[number].data;
    if (data.size() > 0xFFFF) return std::nullopt;  // cannot be described in 2 bytes
    Put16(body, data.size());
    body.insert(body.end(), data.begin(), data.end());
  }
  std::string name = Cp1252ToUtf8(db.header.Name());
  return BeamObject{std::move(body), Utf8ToUtf16(name + ".qvm"),
                    Utf8ToUtf16(name + ": Filtered Records")};
}

int SendVcard(const BeamObject& object, std::string_view creator, const ObexSendOptions& options,
              CancelEvent& cancel, Prompter& prompter) {
  std::vector<ObexItem> items(5);
  items[0].id = kHeaderDescription;
  items[0].text = object.description;
  items[1].id = kHeaderName;
  items[1].text = object.name;
  items[2].id = kHeaderCreator;
  items[2].value = CreatorValue(creator);
  items[3].id = kHeaderLength;
  items[3].value = static_cast<std::uint32_t>(object.body.size());
  items[4].id = kHeaderBody;
  items[4].data = object.body;
  return PutObexInfo(items, options, cancel, prompter);
}

BeamSender::BeamSender(Prompter& prompter, std::function<void(std::string_view)> post)
    : prompter_(prompter), post_(std::move(post)) {}

BeamSender::~BeamSender() {
  Wait();
}

void BeamSender::Wait() {
  if (thread_.joinable()) thread_.join();
}

bool BeamSender::Start(std::function<std::optional<BeamObject>()> build, bool file,
                       const ObexSendOptions& options) {
  if (thread_.joinable()) {
    auto until = std::chrono::steady_clock::now() + kSendPatience;
    while (busy_ && std::chrono::steady_clock::now() < until)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (busy_) {
      prompter_.message(StringPrintf("%s: Timed-out waiting for send thread term", "SendNote"),
                        "Error", Icon::Error);
      return false;
    }
    thread_.join();
  }
  busy_ = true;
  result_ = 0;
  cancel_.Reset();
  thread_ = std::thread([this, build = std::move(build), file, options] {
    auto object = build();
    if (object) {
      result_ = SendVcard(*object, kBeamCreator, options, cancel_, prompter_);
      if (result_ != 1 && !cancel_.cancelled())
        prompter_.message(StringPrintf(file ? "%s: Error sending File" : "%s: Error sending Record",
                                       file ? "SendNoteThread" : "SendPtrThread"),
                          "Error", Icon::Error);
    }
    // An empty record or view sends nothing and leaves listening stopped: kept as built.
    if (object || file) post_(kStartListening);
    busy_ = false;
  });
  return true;
}

}  // namespace qv
