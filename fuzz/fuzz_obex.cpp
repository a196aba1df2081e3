// libFuzzer target: what a peer sends to the listener. Any bytes, served by ProcessIncoming as
// one connection, must never crash, overrun or write outside the receive file; the names it
// learns go through the same checks the receiving steps make.

#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "exchange/beam_receive.h"
#include "exchange/obex_server.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 60000) return 0;  // what a socket pair buffers without a reader
  int pair[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return 0;
  qv::Socket ours(pair[0]);
  {
    qv::Socket theirs(pair[1]);
    int error = 0;
    qv::SendAll(theirs.fd(), {data, size}, 100, error);
  }  // closed: every wait ends at once
  qv::SilentPrompter quiet;
  qv::ObexReceiveOptions options{"/tmp/fuzz_obex_" + std::to_string(getpid()) + ".dat", 0, 0};
  qv::ReceivedObject object;
  if (qv::ProcessIncoming(ours.fd(), options, object, quiet) == 1) {
    qv::KindOfObject(object.name);
    qv::SafeFileName(qv::RecordsDatabaseName(object.name));
  }
  unlink(options.temp_path.c_str());
  // The header scan alone, over the same bytes as one packet.
  qv::ReceivedObject scanned;
  qv::ScanPacket(std::span(data, size), scanned,
                 [](std::span<const std::uint8_t>) { return true; });
  return 0;
}
