#pragma once
// The listen thread: accepts one OBEX connection at a time and hands each received object on.

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "exchange/obex_server.h"
#include "platform/settings.h"

namespace qv {

// "START_LISTENING": what a sender posts when it is done, so listening resumes.
inline constexpr const char* kStartListening = "START_LISTENING";

struct ListenOptions {
  ObexEndpoint bind;
  ObexReceiveOptions receive;
  int idle_sleep_ms = 1000;  // the look-again interval when no connection waits
  std::function<void(std::uint16_t port)> on_bound;  // told the port once listening
  // Told on the listen thread as it ends: false when an error ended it (shown).
  std::function<void(bool ok)> on_end;
};

// The listener's settings: address, port and the receive file under `temp_folder`.
ListenOptions ListenOptionsFromSettings(const Settings& settings, const std::string& temp_folder);

inline constexpr const char* kHintsSetting = "Comm/IrDA/Hints";
inline constexpr int kHintsValue = 33312;

// Prepares the port settings once at start: writes Comm/IrDA/Hints = 33312 when it is missing
// and checks that the address and port settings can be used. 1 on success, 0 after showing why.
int SetupIRStuff(Settings& settings, Prompter& prompter);

// Called on the listen thread with each stored object; the receive file is the handler's to
// delete.
using ObjectHandler = std::function<void(const ReceivedObject&, const std::string& temp_path)>;
// The receive dialog's status line.
using StatusHandler = std::function<void(std::string_view)>;

// What the listen thread runs, on whatever thread calls it: returns when `stop` is set (true)
// or after an error ended it (false, shown).
bool ListenLoop(const ListenOptions& options, const std::atomic<bool>& stop,
                const std::function<bool(int)>& idle_wait, Prompter& prompter,
                const ObjectHandler& on_object, const StatusHandler& on_status);

class ObexListener {
 public:
  ObexListener(Prompter& prompter, ObjectHandler on_object, StatusHandler on_status = {});
  ~ObexListener();
  // Stops a running listen thread, clears the stop flag and starts a new one.
  void StartListenThread2(const ListenOptions& options);
  // Sets the stop flag and waits up to 5,000 ms for the thread. False on time-out (shown).
  bool StopListenThread();
  bool running() const { return running_; }

 private:
  void Run(ListenOptions options);

  Prompter& prompter_;
  ObjectHandler on_object_;
  StatusHandler on_status_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> running_{false};
  std::mutex mutex_;
  std::condition_variable wake_;
  std::thread thread_;
};

}  // namespace qv
