#include "exchange/obex_socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>

namespace qv {

namespace {

// Waits for `events` on fd; false with ETIMEDOUT or errno.
bool WaitFor(int fd, short events, int timeout_ms, int& error) {
  pollfd p{fd, events, 0};
  for (;;) {
    int n = poll(&p, 1, timeout_ms);
    if (n > 0) return true;
    if (n == 0) {
      error = ETIMEDOUT;
      return false;
    }
    if (errno != EINTR) {
      error = errno;
      return false;
    }
  }
}

addrinfo* Resolve(const ObexEndpoint& endpoint, bool passive, int& error) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = passive ? AI_PASSIVE : 0;
  addrinfo* found = nullptr;
  std::string port = std::to_string(endpoint.port);
  if (getaddrinfo(endpoint.host.empty() ? nullptr : endpoint.host.c_str(), port.c_str(), &hints,
                  &found) != 0) {
    error = EADDRNOTAVAIL;
    return nullptr;
  }
  return found;
}

// Connects without blocking past `timeout_ms`, then leaves the socket blocking as it was.
bool ConnectWithin(int fd, const addrinfo* a, int timeout_ms, int& error) {
  int flags = fcntl(fd, F_GETFL);
  fcntl(fd, F_SETFL, flags | O_NONBLOCK);
  if (connect(fd, a->ai_addr, a->ai_addrlen) != 0) {
    if (errno != EINPROGRESS) {
      error = errno;
      return false;
    }
    if (!WaitFor(fd, POLLOUT, timeout_ms, error)) return false;
    socklen_t length = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0) error = errno;
    if (error != 0) return false;
  }
  fcntl(fd, F_SETFL, flags);
  return true;
}

}  // namespace

std::optional<ObexEndpoint> ParseEndpoint(const std::string& text, std::uint16_t default_port) {
  ObexEndpoint endpoint{text, default_port};
  std::size_t colon = text.rfind(':');
  bool bracketed = !text.empty() && text.front() == '[';
  if (bracketed) {
    std::size_t close = text.find(']');
    if (close == std::string::npos) return std::nullopt;
    endpoint.host = text.substr(1, close - 1);
    colon = close + 1 < text.size() && text[close + 1] == ':' ? close + 1 : std::string::npos;
  } else if (colon != std::string::npos && text.find(':') != colon) {
    return endpoint;  // a bare IPv6 address
  } else if (colon != std::string::npos) {
    endpoint.host = text.substr(0, colon);
  }
  if (colon == std::string::npos) return endpoint;
  std::string port = text.substr(colon + 1);
  unsigned value = 0;
  auto [end, ec] = std::from_chars(port.data(), port.data() + port.size(), value);
  if (ec != std::errc() || end != port.data() + port.size() || value > 65535 || port.empty())
    return std::nullopt;
  endpoint.port = static_cast<std::uint16_t>(value);
  return endpoint;
}

Socket& Socket::operator=(Socket&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) close(fd_);
    fd_ = other.release();
  }
  return *this;
}

Socket::~Socket() {
  if (fd_ >= 0) close(fd_);
}

int Socket::release() {
  int fd = fd_;
  fd_ = -1;
  return fd;
}

Socket ListenOn(const ObexEndpoint& endpoint, int& error) {
  addrinfo* found = Resolve(endpoint, true, error);
  if (!found) return {};
  Socket socket;
  error = EADDRNOTAVAIL;
  for (addrinfo* a = found; a; a = a->ai_next) {
    Socket s(::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!s.valid()) {
      error = errno;
      continue;
    }
    int on = 1;
    setsockopt(s.fd(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(s.fd(), a->ai_addr, a->ai_addrlen) != 0 || listen(s.fd(), 5) != 0) {
      error = errno;
      continue;
    }
    socket = std::move(s);
    break;
  }
  freeaddrinfo(found);
  return socket;
}

Socket ConnectTo(const ObexEndpoint& endpoint, int& error, int timeout_ms) {
  addrinfo* found = Resolve(endpoint, false, error);
  if (!found) return {};
  Socket socket;
  error = ECONNREFUSED;
  for (addrinfo* a = found; a; a = a->ai_next) {
    Socket s(::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, 0));
    if (!s.valid()) {
      error = errno;
      continue;
    }
    if (!ConnectWithin(s.fd(), a, timeout_ms, error)) continue;
    int on = 1;
    setsockopt(s.fd(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    socket = std::move(s);
    break;
  }
  freeaddrinfo(found);
  return socket;
}

std::uint16_t BoundPort(const Socket& socket) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(socket.fd(), reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
  if (address.ss_family == AF_INET)
    return ntohs(reinterpret_cast<sockaddr_in*>(&address)->sin_port);
  return ntohs(reinterpret_cast<sockaddr_in6*>(&address)->sin6_port);
}

bool SendAll(int fd, std::span<const std::uint8_t> bytes, int timeout_ms, int& error) {
  while (!bytes.empty()) {
    if (!WaitFor(fd, POLLOUT, timeout_ms, error)) return false;
    ssize_t n = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n < 0) {
      if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK) continue;
      error = errno;
      return false;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(n));
  }
  return true;
}

long ReceiveSome(int fd, std::span<std::uint8_t> buffer, int timeout_ms, int& error) {
  for (;;) {
    if (!WaitFor(fd, POLLIN, timeout_ms, error)) return -1;
    ssize_t n = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (n >= 0) return n;
    if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK) continue;
    error = errno;
    return -1;
  }
}

}  // namespace qv
