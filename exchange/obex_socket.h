#pragma once
// The stream socket under OBEX: TCP here, where the handheld used IrDA. Every wait is bounded,
// so a peer that stalls is dropped.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace qv {

// The socket settings: Comm/IrDA/Bind, Comm/IrDA/Port, Comm/IrDA/Peer.
inline constexpr std::uint16_t kObexPort = 650;
inline constexpr const char* kBindSetting = "Comm/IrDA/Bind";
inline constexpr const char* kPortSetting = "Comm/IrDA/Port";
inline constexpr const char* kPeerSetting = "Comm/IrDA/Peer";

struct ObexEndpoint {
  std::string host = "127.0.0.1";  // loopback until the user allows the network
  std::uint16_t port = kObexPort;
};

// "HOST", "HOST:PORT" or "[V6]:PORT"; nothing for a bad port.
std::optional<ObexEndpoint> ParseEndpoint(const std::string& text, std::uint16_t default_port);

// An owned socket descriptor, closed on destruction.
class Socket {
 public:
  Socket() = default;
  explicit Socket(int fd) : fd_(fd) {}
  Socket(Socket&& other) noexcept : fd_(other.release()) {}
  Socket& operator=(Socket&& other) noexcept;
  ~Socket();
  int fd() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  int release();

 private:
  int fd_ = -1;
};

// Resolves and binds a listening socket (non-blocking, backlog 5). errno tells why on failure.
Socket ListenOn(const ObexEndpoint& endpoint, int& error);
// One connection attempt of at most `timeout_ms` (a host that never answers gives ETIMEDOUT
// then, not after the system's minutes); errno-style code in `error` on failure.
Socket ConnectTo(const ObexEndpoint& endpoint, int& error, int timeout_ms = 5000);
// The port a listening socket was given (for port 0).
std::uint16_t BoundPort(const Socket& socket);

// Sends everything; false (errno in `error`) when the peer does not take it in time.
bool SendAll(int fd, std::span<const std::uint8_t> bytes, int timeout_ms, int& error);
// One receive of up to `buffer.size()` bytes, waiting at most `timeout_ms`. Returns the count,
// 0 when the peer closed, -1 with `error` set (ETIMEDOUT for a stall).
long ReceiveSome(int fd, std::span<std::uint8_t> buffer, int timeout_ms, int& error);

}  // namespace qv
