// The transport's settings at start, the whole-transfer deadline of the listener, Cancel while
// an object is being sent, and the access check on the open database records go into.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "exchange/beam_receive.h"
#include "exchange/beam_send.h"
#include "exchange/obex_listener.h"
#include "tests/support/builders.h"
#include "tests/support/fakes.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::ScriptedPrompter;

// A settings store that takes nothing, as a read-only configuration file does.
class DeafSettings : public test::MemorySettings {
 public:
  void write(std::string_view, std::string_view) override {}
};

TEST(SetupIRStuff, WritesHintsOnceAndRefusesSettingsItCannotUse) {
  ScriptedPrompter prompter;
  test::MemorySettings settings;
  EXPECT_EQ(SetupIRStuff(settings, prompter), 1);
  EXPECT_EQ(settings.values.at("Comm/IrDA/Hints"), "33312");
  settings.values["Comm/IrDA/Hints"] = "1";
  EXPECT_EQ(SetupIRStuff(settings, prompter), 1);
  EXPECT_EQ(settings.values.at("Comm/IrDA/Hints"), "1");  // present: left as it is
  EXPECT_TRUE(prompter.Messages().empty());

  settings.values["Comm/IrDA/Port"] = "70000";
  EXPECT_EQ(SetupIRStuff(settings, prompter), 0);
  settings.values["Comm/IrDA/Port"] = "650";
  settings.values["Comm/IrDA/Bind"] = "[::1";
  EXPECT_EQ(SetupIRStuff(settings, prompter), 0);
  DeafSettings deaf;
  EXPECT_EQ(SetupIRStuff(deaf, prompter), 0);
  EXPECT_EQ(prompter.Messages(),
            (std::vector<std::string>{"ERROR: Unable to intialize Infrared Port",
                                      "ERROR: Unable to intialize Infrared Communications",
                                      "SetupIRStuff: Reg value create failed - 5"}));
}

TEST(ObexDeadline, APeerTricklingPacketsIsCutOffAtTheTransferLimit) {
  test::TempFolder folder;
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  Socket ours(pair[0]), theirs(pair[1]);
  std::atomic<bool> done{false};
  // Never silent long enough for the per-receive time-out, never finished either.
  std::thread peer([&] {
    int error = 0;
    SendAll(theirs.fd(), ConnectPacket(), 1000, error);
    const std::uint8_t empty_put[3] = {kObexPut, 0x00, 0x03};
    while (!done && SendAll(theirs.fd(), empty_put, 1000, error)) {
      std::uint8_t answer[16];
      ReceiveSome(theirs.fd(), answer, 1000, error);
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });
  ScriptedPrompter prompter;
  ReceivedObject object;
  ObexReceiveOptions options{folder.Path("IrData.dat"), 1000, 0, 400};
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ProcessIncoming(ours.fd(), options, object, prompter), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  done = true;
  ours = Socket();
  peer.join();
  ASSERT_FALSE(prompter.Messages().empty());
  EXPECT_EQ(prompter.Messages().back(),
            "ProcessIncoming: The transfer took longer than 0 seconds and was ended");
}

TEST(ObexCancel, CancelWhileSendingStopsBeforeTheNextPacket) {
  int error = 0;
  Socket listener = ListenOn({"127.0.0.1", 0}, error);
  const std::uint16_t port = BoundPort(listener);
  CancelEvent cancel;
  int packets = 0;
  // Answers like a receiver and presses Cancel when the first PUT arrives.
  std::thread peer([&] {
    pollfd p{listener.fd(), POLLIN, 0};
    poll(&p, 1, 5000);
    Socket connection(accept(listener.fd(), nullptr, nullptr));
    std::uint8_t buffer[kObexLargestPacket];
    int e = 0;
    while (ReceiveSome(connection.fd(), buffer, 1000, e) > 0) {
      ++packets;
      if (buffer[0] == kObexPut) cancel.Cancel();
      const std::uint8_t answer[3] = {packets == 1 ? kObexSuccess : kObexContinue, 0x00, 0x03};
      SendAll(connection.fd(), answer, 1000, e);
    }
  });
  BeamObject object{Bytes(40000, 'x'), u"Big.PDB", u"Big.PDB"};
  ScriptedPrompter prompter;
  EXPECT_EQ(SendVcard(object, kBeamCreator, {{"127.0.0.1", port}, 1000, 1000}, cancel, prompter),
            0);
  peer.join();
  EXPECT_EQ(packets, 2);  // the CONNECT and the first PUT; no body, no DISCONNECT
  EXPECT_TRUE(prompter.Messages().empty());
}

TEST(ReceiveAccess, RecordsAreNotInsertedIntoAnOpenDatabaseThatRefusesOpening) {
  test::TempFolder folder;
  test::ScriptedPrompter prompter;
  test::FixedClock clock;
  test::DatabaseBuilder builder("Inventory");
  builder.Field("Item", kText).Row({"bolt"});
  auto db = builder.Build();
  db->path = folder.Path("Inventory.PDB");
  ASSERT_TRUE(SaveDatabase(*db, clock));
  int checks = 0;
  ReceiveHost host{prompter,
                   clock,
                   folder.path(),
                   db.get(),
                   {},
                   {},
                   {},
                   [&](Database&) { return ++checks, false; }};
  prompter.default_answer = Answer::Yes;
  auto one = RecordObject(*db, 0);
  ASSERT_TRUE(one);
  const std::string temp = folder.Path("IrData.dat");
  test::WriteText(temp, std::string(one->body.begin(), one->body.end()));
  EXPECT_EQ(HandleReceivedObject(host, {one->name, one->description}, temp), 0);
  EXPECT_EQ(checks, 1);
  EXPECT_EQ(db->count(), 1u);
  EXPECT_FALSE(std::filesystem::exists(temp));
  EXPECT_EQ(prompter.Messages().back(), "Unable to open Database to insert record!");
}

}  // namespace
}  // namespace qv
