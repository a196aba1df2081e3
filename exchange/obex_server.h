#pragma once
// The receiving end: serve one OBEX connection, writing the object's body to the receive file.

#include <atomic>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "exchange/obex_packet.h"
#include "exchange/obex_socket.h"
#include "platform/prompter.h"

namespace qv {

struct ObexReceiveOptions {
  std::string temp_path;  // IrData.dat, created anew for every object
  int timeout_ms = 5000;  // a peer silent this long is dropped
  int linger_ms = 500;    // the wait after answering the DISCONNECT
  // A whole transfer ends within this, however the peer paces its bytes, so a peer trickling a
  // byte at a time cannot hold the one connection the listener serves.
  int transfer_limit_ms = 10 * 60 * 1000;
};

// Receives one whole packet into `buffer`: its length is in bytes 1..2. Returns the length, or
// 0 after showing why (more than 10 further receives, a failed receive, a stall, a bad length).
std::size_t RecvIrPacket(std::span<std::uint8_t> buffer, int fd, int timeout_ms,
                         Prompter& prompter);
// Appends to the open receive file; false after showing why.
bool WriteDataToFile(int file, std::span<const std::uint8_t> data, Prompter& prompter);
// Serves one connection: CONNECT, the PUTs, DISCONNECT. 1 when a whole object was stored in
// options.temp_path (its facts in `object`), 0 after showing the failure.
int ProcessIncoming(int connection, const ObexReceiveOptions& options, ReceivedObject& object,
                    Prompter& prompter);

}  // namespace qv
