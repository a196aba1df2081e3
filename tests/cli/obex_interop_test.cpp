// Interoperation with an independent OBEX implementation: OpenOBEX's obex_tcp, which always uses
// TCP port 650.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <future>
#include <thread>

#include "exchange/obex_socket.h"
#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

bool HaveObexTcp() {
  return std::system("command -v obex_tcp >/dev/null 2>&1") == 0;
}

// obex_tcp started in `folder` with its output in `log`; stopped by the destructor.
class ObexTcp {
 public:
  ObexTcp(const std::string& folder, const std::string& log, std::vector<std::string> args) {
    // Built before fork: the child of a threaded process must not allocate.
    std::vector<char*> argv{const_cast<char*>("obex_tcp")};
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      if (chdir(folder.c_str()) != 0) _exit(127);
      int out = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      dup2(out, 1);
      dup2(out, 2);
      execvp("obex_tcp", argv.data());
      _exit(127);
    }
  }
  ~ObexTcp() { Stop(); }
  // Waits up to `patience` for it to end by itself, then ends it.
  void Stop(std::chrono::milliseconds patience = std::chrono::milliseconds(0)) {
    if (pid_ <= 0) return;
    auto until = std::chrono::steady_clock::now() + patience;
    int status = 0;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() >= until) {
        kill(pid_, SIGTERM);
        waitpid(pid_, &status, 0);
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
};

TEST(ObexInterop, ObexTcpReceivesWhatQvdbSendsAndQvdbReceivesWhatItPushes) {
  if (!HaveObexTcp()) GTEST_SKIP() << "obex_tcp (Debian openobex-apps) is not installed";
  {
    int error = 0;
    Socket probe = ListenOn({"127.0.0.1", kObexPort}, error);
    if (!probe.valid())
      GTEST_SKIP() << "TCP port 650 cannot be bound here (" << std::strerror(error)
                   << "); obex_tcp always uses it, so the interoperation test cannot run";
  }
  TempFolder folder;
  std::filesystem::create_directories(folder.Path("peer"));
  std::filesystem::create_directories(folder.Path("data"));
  const std::string db = folder.Path("Stock.PDB");
  ASSERT_EQ(RunQvdb({"new", db, "--name", "Stock", "--field", "Item:Text:2000"}).exit_code, 0);
  for (char c : {'a', 'b', 'c'})  // records of 1,500 bytes, so bodies take several packets
    ASSERT_EQ(RunQvdb({"add", db, "Item=" + std::string(1500, c)}).exit_code, 0);
  const std::map<std::string, std::string> env{{"XDG_RUNTIME_DIR", folder.path()},
                                               {"XDG_CONFIG_HOME", folder.Path("config")}};

  // obex_tcp pushing a file to qvdb first: obex_tcp's server binds port 650 without address
  // reuse, so it runs last.
  auto receiver = std::async(std::launch::async, [&] {
    return RunQvdb({"beam", "receive", "--listen", "127.0.0.1:650", "--once", "--yes", "--into",
                    folder.Path("data")},
                   "", env);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // qvdb starts listening
  ObexTcp client(folder.path(), folder.Path("client.log"), {"Stock.PDB", "127.0.0.1"});
  auto got = receiver.get();
  client.Stop(std::chrono::milliseconds(2000));
  EXPECT_EQ(got.exit_code, 0) << got.err << Slurp(folder.Path("client.log"));
  EXPECT_EQ(got.out, "received Stock.PDB (" + std::to_string(Slurp(db).size()) + " bytes)\n");
  EXPECT_TRUE(Slurp(folder.Path("data/Stock.PDB")) == Slurp(db));

  // obex_tcp as the receiver.
  {
    ObexTcp server(folder.Path("peer"), folder.Path("server.log"), {});
    auto sent = RunQvdb({"beam", "send", db, "--to", "127.0.0.1", "--wait", "5"}, "", env);
    server.Stop(std::chrono::milliseconds(300));
    std::string log = Slurp(folder.Path("server.log"));
    if (log.find("Cannot listen") != std::string::npos)
      GTEST_SKIP() << "obex_tcp could not bind TCP port 650 (a connection of an earlier run "
                      "may hold it for up to a minute)";
    EXPECT_EQ(sent.exit_code, 0) << sent.err;
    EXPECT_NE(log.find("Filename = Stock.PDB"), std::string::npos) << log;
    std::string length = "HEADER_LENGTH = " + std::to_string(Slurp(db).size());
    EXPECT_NE(log.find(length), std::string::npos) << log;
    EXPECT_TRUE(Slurp(folder.Path("peer/Stock.PDB")) == Slurp(db));
  }
}

}  // namespace
}  // namespace qv::test
