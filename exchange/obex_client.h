#pragma once
// The sending end of one OBEX object: find the peer, connect, PUT the object, disconnect.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <span>
#include <vector>

#include "exchange/obex_packet.h"
#include "exchange/obex_socket.h"
#include "platform/prompter.h"

namespace qv {

// The cancel flag and the manual-reset "CancelEvent" a looking dialog's Cancel sets.
class CancelEvent {
 public:
  void Cancel();
  void Reset();
  bool cancelled() const { return flag_; }
  // Waits up to `wait` for a cancel; true when cancelled.
  bool WaitFor(std::chrono::milliseconds wait);

 private:
  std::atomic<bool> flag_{false};
  std::mutex mutex_;
  std::condition_variable signal_;
};

struct ObexSendOptions {
  ObexEndpoint peer;
  int timeout_ms = 5000;  // a peer silent this long is dropped
  // How long to look for the peer; 0 looks until cancelled, as the looking dialog does.
  int find_patience_ms = 0;
};

// Polls the peer every 100 ms until it accepts or the user cancels. An invalid socket on
// cancel or failure (the failure shown).
Socket InitIrSock(const ObexSendOptions& options, CancelEvent& cancel, Prompter& prompter);
// Sends one packet and compares the answer's first byte with `expected`. Always 1: a failed
// exchange shows its message and the transfer goes on, on purpose. `broken` is set when the
// connection itself failed, so a sender can stop instead of repeating the message per packet.
int SendObexPacket(std::span<const std::uint8_t> packet, int fd, std::uint8_t expected,
                   int timeout_ms, Prompter& prompter, bool* broken = nullptr,
                   Bytes* answer = nullptr);
// Sends one object made of `items`; 1 after a complete exchange, 0 when no connection or buffer
// could be had or the user cancelled (between packets).
int PutObexInfo(const std::vector<ObexItem>& items, const ObexSendOptions& options,
                CancelEvent& cancel, Prompter& prompter);

}  // namespace qv
