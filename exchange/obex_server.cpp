#include "exchange/obex_server.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "engine/text.h"

namespace qv {

namespace {

constexpr int kFurtherReceives = 10;

void ShowError(Prompter& prompter, const std::string& text) {
  prompter.message(text, "Error", Icon::Error);
}

bool SendAnswer(int fd, std::span<const std::uint8_t> answer, int timeout_ms, Prompter& prompter) {
  int error = 0;
  if (SendAll(fd, answer, timeout_ms, error)) return true;
  ShowError(prompter,
            StringPrintf("%s: Sending First Packet failed. Error: %d", "SendIrPacket", error));
  return false;
}

std::string ScanFailure(ScanResult result) {
  switch (result) {
    case ScanResult::TooLarge:
      return StringPrintf("%s: The object is larger than %llu bytes and was refused",
                          "ProcessIncoming", static_cast<unsigned long long>(kObexLargestObject));
    case ScanResult::BadHeader:
      return StringPrintf("%s: A header runs past the end of its packet", "ProcessIncoming");
    default:
      return {};  // the write failure was shown already
  }
}

class FileCloser {
 public:
  explicit FileCloser(int fd) : fd_(fd) {}
  ~FileCloser() {
    if (fd_ >= 0) close(fd_);
  }
  int fd() const { return fd_; }

 private:
  int fd_;
};

}  // namespace

std::size_t RecvIrPacket(std::span<std::uint8_t> buffer, int fd, int timeout_ms,
                         Prompter& prompter) {
  std::size_t have = 0;
  std::size_t want = 3;  // the packet start first, so nothing past this packet is read
  for (int receives = 0; have < want; ++receives) {
    if (receives > kFurtherReceives) {
      ShowError(prompter,
                StringPrintf("%s: Failed to get full packet. Error: %d", "RecvIrPacket", EPROTO));
      return 0;
    }
    int error = 0;
    long n = ReceiveSome(fd, buffer.subspan(have, want - have), timeout_ms, error);
    if (n <= 0) {
      const char* format = receives == 0 ? "%s: First socket recv failed. Error: %d"
                                         : "%s: Multiple socket recv failed. Error: %d";
      ShowError(prompter, StringPrintf(format, "RecvIrPacket", n == 0 ? ECONNRESET : error));
      return 0;
    }
    have += static_cast<std::size_t>(n);
    if (have >= 3 && want == 3) {
      want = static_cast<std::size_t>(buffer[1]) << 8 | buffer[2];
      if (want < 3 || want > buffer.size()) {
        ShowError(prompter, StringPrintf("%s: Failed to get full packet. Error: %d", "RecvIrPacket",
                                         EMSGSIZE));
        return 0;
      }
    }
  }
  return want;
}

bool WriteDataToFile(int file, std::span<const std::uint8_t> data, Prompter& prompter) {
  ssize_t n = -1;
  do {
    n = write(file, data.data(), data.size());
  } while (n < 0 && errno == EINTR);
  if (n < 0) {
    ShowError(prompter, StringPrintf("%s: Error writing to file - %d", "WriteDataToFile", errno));
    return false;
  }
  if (static_cast<std::size_t>(n) != data.size()) {
    ShowError(prompter, StringPrintf("%s: Didn't write requested bytes - %d", "WriteDataToFile",
                                     static_cast<int>(n)));
    return false;
  }
  return true;
}

int ProcessIncoming(int connection, const ObexReceiveOptions& options, ReceivedObject& object,
                    Prompter& prompter) {
  object = {};
  // Every packet a 2-byte length can describe fits, so no peer's length can overrun it.
  std::vector<std::uint8_t> buffer(kObexLargestPacket);
  const auto deadline = std::chrono::steady_clock::now() +
                        std::chrono::milliseconds(options.transfer_limit_ms);
  // Checked between packets: a packet itself is bounded by the silent-peer time-out and the
  // 10 further receives.
  const int t = options.timeout_ms;
  auto left = [&] { return std::chrono::steady_clock::now() < deadline; };
  auto too_long = [&] {
    ShowError(prompter, StringPrintf("%s: The transfer took longer than %d seconds and was ended",
                                     "ProcessIncoming", options.transfer_limit_ms / 1000));
    return 0;
  };
  std::size_t length = RecvIrPacket(buffer, connection, t, prompter);
  if (length == 0) return 0;
  if (buffer[0] != kObexConnect || length < 7) {
    ShowError(prompter,
              StringPrintf("%s: Socket CONNECT recv failed. Error: %d", "ProcessIncoming", EPROTO));
    return 0;
  }
  const std::uint8_t peer_max[2] = {buffer[5], buffer[6]};
  FileCloser file(
      open(options.temp_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.fd() < 0) {
    ShowError(prompter, StringPrintf("%s: Error creating file - %d", "ProcessIncoming", errno));
    return 0;
  }
  const std::uint8_t welcome[7] = {kObexSuccess, 0x00, 0x07, 0x10, 0x00, peer_max[0], peer_max[1]};
  if (!SendAnswer(connection, welcome, t, prompter)) return 0;
  auto write = [&](std::span<const std::uint8_t> data) {
    return WriteDataToFile(file.fd(), data, prompter);
  };
  // A peer sending packets without body bytes forever is cut off too.
  std::uint64_t received = 0;
  while (!object.final) {
    if (!left()) return too_long();
    length = RecvIrPacket(buffer, connection, t, prompter);
    if (length == 0) return 0;
    received += length;
    if (buffer[0] == 0xFF || received > 2 * kObexLargestObject) return 0;  // ABORT, or no end
    ScanResult result = ScanPacket(std::span(buffer).first(length), object, write);
    if (result != ScanResult::Ok) {
      if (auto text = ScanFailure(result); !text.empty()) ShowError(prompter, text);
      return 0;
    }
    const std::uint8_t answer[3] = {object.final ? kObexSuccess : kObexContinue, 0x00, 0x03};
    if (!SendAnswer(connection, answer, t, prompter)) return 0;
  }
  // The DISCONNECT. A peer that closes instead has still delivered the whole object.
  SilentPrompter quiet;
  if (left() && RecvIrPacket(buffer, connection, t, quiet) > 0) {
    const std::uint8_t bye[3] = {kObexSuccess, 0x00, 0x03};
    SendAnswer(connection, bye, t, prompter);
    std::this_thread::sleep_for(std::chrono::milliseconds(options.linger_ms));
  }
  return 1;
}

}  // namespace qv
