#include "exchange/obex_client.h"

#include <sys/socket.h>

#include <cerrno>

#include "engine/text.h"

namespace qv {

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(100);
constexpr int kAttemptPatience = 500;

void ShowError(Prompter& prompter, const std::string& text) {
  prompter.message(text, "Error", Icon::Error);
}

}  // namespace

void CancelEvent::Cancel() {
  {
    std::lock_guard lock(mutex_);
    flag_ = true;
  }
  signal_.notify_all();
}

void CancelEvent::Reset() {
  std::lock_guard lock(mutex_);
  flag_ = false;
}

bool CancelEvent::WaitFor(std::chrono::milliseconds wait) {
  std::unique_lock lock(mutex_);
  return signal_.wait_for(lock, wait, [this] { return flag_.load(); });
}

Socket InitIrSock(const ObexSendOptions& options, CancelEvent& cancel, Prompter& prompter) {
  prompter.progress("Looking for Sending Device....");
  prompter.progress("(Align Infrared Ports)");
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    int error = 0;
    // Short attempts, so Cancel is seen soon even when the peer's host never answers.
    Socket socket = ConnectTo(options.peer, error, kAttemptPatience);
    if (socket.valid()) return socket;
    // Nobody listening yet is the IrDA case of no device in range: look again.
    bool absent = error == ECONNREFUSED || error == ECONNABORTED || error == ETIMEDOUT ||
                  error == EHOSTUNREACH || error == ENETUNREACH;
    if (!absent) {
      ShowError(prompter, StringPrintf("%s: Connecting to the IR port failed - port may in use "
                                       "by another program. Error: %d",
                                       "InitIrSock", error));
      return {};
    }
    auto waited = std::chrono::steady_clock::now() - start;
    if (options.find_patience_ms > 0 &&
        waited >= std::chrono::milliseconds(options.find_patience_ms)) {
      ShowError(prompter, StringPrintf("%s: Error looking for IR device. Error code: %d",
                                       "InitIrSock", ETIMEDOUT));
      return {};
    }
    if (cancel.WaitFor(kPollInterval)) return {};
  }
}

int SendObexPacket(std::span<const std::uint8_t> packet, int fd, std::uint8_t expected,
                   int timeout_ms, Prompter& prompter, bool* broken, Bytes* answer_out) {
  int error = 0;
  if (!SendAll(fd, packet, timeout_ms, error)) {
    ShowError(prompter,
              StringPrintf("%s: Sending First Packet failed. Error: %d", "SendObexPacket", error));
    if (broken) *broken = true;
    return 1;
  }
  std::uint8_t answer[100];
  long n = ReceiveSome(fd, answer, timeout_ms, error);
  if (n <= 0) {
    prompter.message(StringPrintf("%s: No data is received, recv failed - %d", "SendObexPacket",
                                  n == 0 ? ECONNRESET : error),
                     "Client", Icon::Error);
    if (broken) *broken = true;
    return 1;
  }
  if (answer_out) answer_out->assign(answer, answer + n);
  if (answer[0] != expected)
    prompter.message(StringPrintf("%s: Incorrect OBEX Response = %X", "SendObexPacket", answer[0]),
                     "Client", Icon::Error);
  return 1;  // on purpose: the transfer goes on to the end
}

int PutObexInfo(const std::vector<ObexItem>& items, const ObexSendOptions& options,
                CancelEvent& cancel, Prompter& prompter) {
  auto first = FirstPutPacket(items);
  if (!first) {
    ShowError(prompter,
              StringPrintf("%s: Error allocating packet buffer - %d", "PutObexInfo", ENOMEM));
    return 0;
  }
  Socket socket = InitIrSock(options, cancel, prompter);
  if (!socket.valid()) return 0;
  cancel.Reset();
  prompter.progress("Sending Data...");
  const int fd = socket.fd();
  const int t = options.timeout_ms;
  bool broken = false;
  Bytes welcome;
  // Cancel in the sending dialog stops the object between packets; the peer drops the part.
  auto exchange = [&](const Bytes& packet, std::uint8_t expected) {
    if (cancel.cancelled()) broken = true;
    if (!broken) SendObexPacket(packet, fd, expected, t, prompter, &broken, &welcome);
  };
  exchange(ConnectPacket(), kObexSuccess);
  // The peer's maximum packet length. Peers taking 4,072 bytes or more get the packets the
  // handhelds send; smaller ones (OpenOBEX offers less) are not sent more than they take.
  std::size_t peer_max = kObexPacketSize;
  if (welcome.size() >= 7 && welcome[0] == kObexSuccess)
    peer_max = static_cast<std::size_t>(welcome[5]) << 8 | welcome[6];
  exchange(*first, kObexContinue);
  std::span<const std::uint8_t> body;
  for (const ObexItem& item : items)
    if (item.id == kHeaderBody) body = item.data;
  for (const Bytes& packet : BodyPackets(body, peer_max)) exchange(packet, kObexContinue);
  exchange(PutFinalPacket(), kObexSuccess);
  exchange(DisconnectPacket(), kObexSuccess);
  shutdown(fd, SHUT_RDWR);
  return broken ? 0 : 1;
}

}  // namespace qv
