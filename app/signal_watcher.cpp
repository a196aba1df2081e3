#include "app/signal_watcher.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace qv::app {

namespace {

// A signal handler can reach nothing but a plain variable: the write end of the watcher's pipe.
volatile sig_atomic_t g_signal_pipe = -1;

void OnSignal(int number) {
  int saved = errno;
  unsigned char byte = static_cast<unsigned char>(number);
  if (g_signal_pipe >= 0) (void)!::write(g_signal_pipe, &byte, 1);
  errno = saved;
}

constexpr int kWatched[] = {SIGTERM, SIGHUP, SIGINT};

}  // namespace

SignalWatcher::SignalWatcher(QObject* parent) : QObject(parent) {
  if (::pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) return;
  g_signal_pipe = pipe_[1];
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, &SignalWatcher::Drain);
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int number : kWatched) ::sigaction(number, &action, nullptr);
}

SignalWatcher::~SignalWatcher() {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  for (int number : kWatched) ::sigaction(number, &action, nullptr);
  g_signal_pipe = -1;
  notifier_.reset();
  for (int fd : pipe_)
    if (fd >= 0) ::close(fd);
}

void SignalWatcher::Drain() {
  unsigned char byte = 0;
  while (::read(pipe_[0], &byte, 1) == 1) emit received(byte);
}

}  // namespace qv::app
