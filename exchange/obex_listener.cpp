#include "exchange/obex_listener.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "engine/text.h"

namespace qv {

namespace {

constexpr auto kStopPatience = std::chrono::milliseconds(5000);

bool IsRecordObject(const std::u16string& name) {
  for (const char16_t* ext : {u".QVM", u".qvm", u".QVR", u".qvr"})
    if (name.find(ext) != std::u16string::npos) return true;
  return false;
}

std::string BindFailure(const ObexEndpoint& endpoint, int error) {
  std::string text =
      "ERROR: Could not take control of the IR port.  If you are using a Pocket PC 2002 device, "
      "please make sure to turn off the 'Receive all incoming beams and select discoverable "
      "mode' option under the Start, Settings, Connections, Beam dialog and try again.";
  text += StringPrintf("\n(%s port %u could not be bound: %s.", endpoint.host.c_str(),
                       endpoint.port, std::strerror(error));
  // Named for both programs: the setting, and where the application shows it.
  if (error == EACCES && endpoint.port < 1024)
    text += StringPrintf(
        " Ports below 1024 need privileges on this system; choose another with "
        "the setting %s (Port under Beaming in Preferences).",
        kPortSetting);
  else if (error == EADDRINUSE)
    text += StringPrintf(
        " Another program uses it; the setting %s (Port under Beaming in Preferences) "
        "chooses another.",
        kPortSetting);
  return text + ")";
}

}  // namespace

ListenOptions ListenOptionsFromSettings(const Settings& settings, const std::string& temp_folder) {
  ListenOptions options;
  options.bind.host = settings.read(kBindSetting).value_or("127.0.0.1");
  int port = ReadIntSetting(settings, kPortSetting, kObexPort);
  if (port > 0 && port <= 65535) options.bind.port = static_cast<std::uint16_t>(port);
  options.receive.temp_path = temp_folder + "/IrData.dat";
  return options;
}

int SetupIRStuff(Settings& settings, Prompter& prompter) {
  // The address and port must make an endpoint before anything can listen or send.
  auto bind = settings.read(kBindSetting);
  if (bind && (bind->empty() || !ParseEndpoint(*bind, kObexPort))) {
    prompter.message("ERROR: Unable to intialize Infrared Communications", "Error", Icon::Error);
    return 0;
  }
  auto port = settings.read(kPortSetting);
  int port_value = ReadIntSetting(settings, kPortSetting, -1);
  if (port && (port_value <= 0 || port_value > 65535)) {
    prompter.message("ERROR: Unable to intialize Infrared Port", "Error", Icon::Error);
    return 0;
  }
  if (settings.read(kHintsSetting)) return 1;
  WriteIntSetting(settings, kHintsSetting, kHintsValue);
  // The store takes no refusal, so a failed write shows as a value that does not read back.
  if (ReadIntSetting(settings, kHintsSetting, -1) != kHintsValue) {
    prompter.message(StringPrintf("%s: %s - %d", "SetupIRStuff", "Reg value create failed", EIO),
                     "Error", Icon::Error);
    return 0;
  }
  return 1;
}

bool ListenLoop(const ListenOptions& options, const std::atomic<bool>& stop,
                const std::function<bool(int)>& idle_wait, Prompter& prompter,
                const ObjectHandler& on_object, const StatusHandler& on_status) {
  if (stop) return true;
  int error = 0;
  Socket listener = ListenOn(options.bind, error);
  if (!listener.valid()) {
    prompter.message(BindFailure(options.bind, error), "Error", Icon::Error);
    return false;
  }
  if (options.on_bound) options.on_bound(BoundPort(listener));
  for (;;) {
    if (stop) return true;
    pollfd p{listener.fd(), POLLIN, 0};
    int ready = poll(&p, 1, 1);
    if (ready < 0 && errno != EINTR) {
      prompter.message(StringPrintf("%s: Socket select failed. Error: %d", "ListenThread", errno),
                       "Error", Icon::Error);
      return false;
    }
    if (ready <= 0) {
      idle_wait(options.idle_sleep_ms);
      continue;
    }
    Socket connection(accept4(listener.fd(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!connection.valid()) {
      if (errno == EAGAIN || errno == EWOULDBLOCK || errno == ECONNABORTED || errno == EINTR)
        continue;  // the peer gave up before we took it
      prompter.message(StringPrintf("%s: Socket accept failed. Error: %d", "ListenThread", errno),
                       "Error", Icon::Error);
      return false;
    }
    if (on_status) on_status("Receiving...");
    ReceivedObject object;
    int ok = ProcessIncoming(connection.fd(), options.receive, object, prompter);
    connection = Socket();
    if (!ok) {
      // A broken transfer leaves nothing behind; the listener goes on serving.
      std::remove(options.receive.temp_path.c_str());
      continue;
    }
    bool records = IsRecordObject(object.name);
    if (on_status) on_status(records ? "Database Record(s) Received" : "Database File Received");
    on_object(object, options.receive.temp_path);
  }
}

ObexListener::ObexListener(Prompter& prompter, ObjectHandler on_object, StatusHandler on_status)
    : prompter_(prompter), on_object_(std::move(on_object)), on_status_(std::move(on_status)) {}

ObexListener::~ObexListener() {
  if (!StopListenThread()) thread_.join();  // bounded: its transfer times out
}

void ObexListener::StartListenThread2(const ListenOptions& options) {
  if (!StopListenThread()) thread_.join();
  stop_ = false;
  running_ = true;
  thread_ = std::thread(&ObexListener::Run, this, options);
}

bool ObexListener::StopListenThread() {
  {
    std::lock_guard lock(mutex_);
    stop_ = true;
  }
  wake_.notify_all();
  if (!thread_.joinable()) return true;
  std::unique_lock lock(mutex_);
  bool ended = wake_.wait_for(lock, kStopPatience, [this] { return !running_.load(); });
  lock.unlock();
  if (!ended) {
    prompter_.message(
        StringPrintf("%s: Timed-out waiting for listen thread term", "StopListenThread"), "Error",
        Icon::Error);
    return false;
  }
  thread_.join();
  return true;
}

void ObexListener::Run(ListenOptions options) {
  auto idle_wait = [this](int ms) {
    std::unique_lock lock(mutex_);
    return wake_.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stop_.load(); });
  };
  bool ok = ListenLoop(options, stop_, idle_wait, prompter_, on_object_, on_status_);
  if (options.on_end) options.on_end(ok);
  {
    std::lock_guard lock(mutex_);
    running_ = false;
  }
  wake_.notify_all();
}

}  // namespace qv
