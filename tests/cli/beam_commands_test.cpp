// qvdb beam send and beam receive, run as two programs over loopback.

#include <gtest/gtest.h>

#include <future>

#include "exchange/obex_socket.h"
#include "tests/cli/qvdb_runner.h"

namespace qv::test {
namespace {

class BeamCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(folder_.Path("in"));
    std::filesystem::create_directories(folder_.Path("out"));
    source_ = folder_.Path("in/Stock.PDB");
    ASSERT_EQ(RunQvdb({"new", source_, "--name", "Stock", "--field", "Item:Text"}).exit_code, 0);
    for (const char* item : {"Item=bolt", "Item=nut"})
      ASSERT_EQ(RunQvdb({"add", source_, item}).exit_code, 0);
  }
  // A port nobody listens on at this moment.
  static std::string FreePort() {
    int error = 0;
    Socket s = ListenOn({"127.0.0.1", 0}, error);
    return std::to_string(BoundPort(s));
  }
  std::future<QvdbResult> Receive(const std::string& port, const std::string& answer = "--yes") {
    return std::async(std::launch::async, [=, this] {
      return RunQvdb({"beam", "receive", "--listen", "127.0.0.1:" + port, "--once", answer,
                      "--into", folder_.Path("out")},
                     "", Environment());
    });
  }
  std::map<std::string, std::string> Environment() const {
    return {{"XDG_RUNTIME_DIR", folder_.path()}, {"XDG_CONFIG_HOME", folder_.Path("config")}};
  }
  // Generous patience: the receiver is a separate process that may be slow to start on a loaded
  // machine, and a sender that gives up first would leave it waiting for ever.
  QvdbResult Send(const std::string& port, std::vector<std::string> extra = {}) {
    std::vector<std::string> args{"beam",   "send", source_, "--to", "127.0.0.1:" + port,
                                  "--wait", "60"};
    args.insert(args.end(), extra.begin(), extra.end());
    return RunQvdb(args, "", Environment());
  }

  TempFolder folder_;
  std::string source_;
};

TEST_F(BeamCommands, ADatabaseThenARecordThenAViewArrive) {
  std::string port = FreePort();
  auto receiver = Receive(port);
  auto sent = Send(port);
  EXPECT_EQ(sent.exit_code, 0) << sent.err;
  auto got = receiver.get();
  EXPECT_EQ(got.exit_code, 0) << got.err;
  EXPECT_EQ(Slurp(folder_.Path("out/Stock.PDB")), Slurp(source_));

  receiver = Receive(port);
  EXPECT_EQ(Send(port, {"--record", "2"}).exit_code, 0);
  got = receiver.get();
  EXPECT_EQ(got.exit_code, 0) << got.err;
  EXPECT_EQ(got.out.rfind("received Stock.qvr (", 0), 0u) << got.out;

  receiver = Receive(port);
  EXPECT_EQ(Send(port, {"--view"}).exit_code, 0);
  EXPECT_EQ(receiver.get().exit_code, 0);
  auto list = RunQvdb({"list", folder_.Path("out/Stock.PDB"), "--format", "tsv"});
  EXPECT_EQ(list.out, "Item\nbolt\nnut\nnut\nbolt\nnut\n");
}

TEST_F(BeamCommands, RefusalsAndFailuresExitOneWithTheirMessage) {
  std::string port = FreePort();
  auto receiver = Receive(port, "--no");
  EXPECT_EQ(Send(port).exit_code, 0);
  EXPECT_EQ(receiver.get().exit_code, 1);
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("out/Stock.PDB")));

  auto nobody =
      RunQvdb({"beam", "send", source_, "--to", "127.0.0.1:" + FreePort(), "--wait", "1"});
  EXPECT_EQ(nobody.exit_code, 1);
  EXPECT_NE(nobody.err.find("InitIrSock: Error looking for IR device. Error code: 110"),
            std::string::npos);

  int error = 0;
  Socket held = ListenOn({"127.0.0.1", 0}, error);
  auto busy =
      RunQvdb({"beam", "receive", "--listen", "127.0.0.1:" + std::to_string(BoundPort(held)),
               "--once", "--into", folder_.Path("out")},
              "", Environment());
  EXPECT_EQ(busy.exit_code, 1);
  EXPECT_NE(busy.err.find("ERROR: Could not take control of the IR port."), std::string::npos);
  EXPECT_NE(busy.err.find("Comm/IrDA/Port"), std::string::npos);
}

TEST_F(BeamCommands, BeamDataPermissionIsChecked) {
  ASSERT_EQ(RunQvdb({"security", source_, "--set", "Beam Data=No Access"}).exit_code, 0);
  auto refused =
      RunQvdb({"beam", "send", source_, "--to", "127.0.0.1:" + FreePort(), "--wait", "1"});
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_NE(refused.err.find("Sorry, You do Not have Security Access"), std::string::npos)
      << refused.err;
}

}  // namespace
}  // namespace qv::test
