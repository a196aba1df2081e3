// The OBEX transport over loopback: packet layouts on the wire, whole transfers, and peers that
// send what they should not.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <future>
#include <thread>

#include "exchange/beam_send.h"
#include "exchange/obex_listener.h"
#include "tests/support/scripted_prompter.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

using test::ScriptedPrompter;

// A peer that answers every packet (Success for CONNECT, PUT final and DISCONNECT, Continue
// otherwise, or a fixed code) and keeps every packet it was sent.
class CapturingPeer {
 public:
  explicit CapturingPeer(int answer_code = 0) : answer_code_(answer_code) {
    int error = 0;
    listener_ = ListenOn({"127.0.0.1", 0}, error);
    port_ = BoundPort(listener_);
    thread_ = std::thread([this] { Serve(); });
  }
  ~CapturingPeer() { thread_.join(); }
  ObexSendOptions Options() const { return {{"127.0.0.1", port_}, 1000, 1000}; }
  std::vector<Bytes> Packets() {
    thread_.join();
    thread_ = std::thread([] {});
    return packets_;
  }

 private:
  void Serve() {
    int error = 0;
    pollfd p{listener_.fd(), POLLIN, 0};
    if (poll(&p, 1, 2000) <= 0) return;
    Socket c(accept(listener_.fd(), nullptr, nullptr));
    for (;;) {
      Bytes packet(3);
      if (!ReadExactly(c.fd(), packet.data(), 3)) return;
      std::size_t length = packet[1] << 8 | packet[2];
      packet.resize(std::max<std::size_t>(length, 3));
      if (length > 3 && !ReadExactly(c.fd(), packet.data() + 3, length - 3)) return;
      packets_.push_back(packet);
      std::uint8_t code = packet[0] == kObexPut ? kObexContinue : kObexSuccess;
      if (answer_code_) code = static_cast<std::uint8_t>(answer_code_);
      std::uint8_t answer[3] = {code, 0, 3};
      SendAll(c.fd(), answer, 1000, error);
      if (packet[0] == kObexDisconnect) return;
    }
  }
  static bool ReadExactly(int fd, std::uint8_t* out, std::size_t n) {
    while (n > 0) {
      int error = 0;
      long got = ReceiveSome(fd, {out, n}, 1000, error);
      if (got <= 0) return false;
      out += got;
      n -= static_cast<std::size_t>(got);
    }
    return true;
  }

  int answer_code_;
  Socket listener_;
  std::uint16_t port_ = 0;
  std::vector<Bytes> packets_;
  std::thread thread_;
};

BeamObject Object(std::size_t body_size) {
  BeamObject o;
  for (std::size_t i = 0; i < body_size; ++i) o.body.push_back(static_cast<std::uint8_t>(i * 7));
  o.name = u"Items.PDB";
  o.description = u"Items.PDB";
  return o;
}

std::size_t LengthOf(const Bytes& packet) {
  return packet[1] << 8 | packet[2];
}

TEST(ObexWire, ConnectFirstPutBodyFinalAndDisconnectAreExact) {
  CapturingPeer peer;
  ScriptedPrompter prompter;
  CancelEvent cancel;
  BeamObject object = Object(10);
  object.name = u"ab";
  object.description = u"c";
  ASSERT_EQ(SendVcard(object, kBeamCreator, peer.Options(), cancel, prompter), 1);
  auto packets = peer.Packets();
  ASSERT_EQ(packets.size(), 5u);
  EXPECT_EQ(packets[0], (Bytes{0x80, 0x00, 0x07, 0x10, 0x00, 0x0F, 0xE8}));
  Bytes first{0x02, 0x00, 0x1D,                                     // PUT, 29 bytes
              0x05, 0x00, 0x07, 0x00, 'c', 0x00, 0x00,              // Description
              0x01, 0x00, 0x09, 0x00, 'a', 0x00, 'b',  0x00, 0x00,  // Name
              0xCF, 'Q',  'v',  'n',  't',                          // creator code
              0xC3, 0x00, 0x00, 0x00, 0x0A};                        // Length
  EXPECT_EQ(packets[1], first);
  EXPECT_EQ(LengthOf(packets[2]), 16u);
  EXPECT_EQ(packets[2][3], 0x48);
  EXPECT_EQ(packets[3], (Bytes{0x82, 0x00, 0x06, 0x49, 0x00, 0x03}));
  EXPECT_EQ(packets[4], (Bytes{0x81, 0x00, 0x03}));
  EXPECT_TRUE(prompter.Messages().empty());
}

TEST(ObexWire, BodyPacketsAroundTheChunkSize) {
  struct Case {
    std::size_t body;
    std::vector<std::size_t> lengths;
  };
  for (const Case& c :
       {Case{4066, {4072}}, Case{4067, {4073}}, Case{4072, {4078}}, Case{4073, {4072, 13}},
        Case{8132, {4072, 4072}}, Case{8133, {4072, 4072, 7}}}) {
    CapturingPeer peer;
    ScriptedPrompter prompter;
    CancelEvent cancel;
    BeamObject object = Object(c.body);
    ASSERT_EQ(SendVcard(object, kBeamCreator, peer.Options(), cancel, prompter), 1);
    auto packets = peer.Packets();
    ASSERT_EQ(packets.size(), c.lengths.size() + 4) << c.body;
    Bytes joined;
    for (std::size_t i = 0; i < c.lengths.size(); ++i) {
      const Bytes& p = packets[2 + i];
      EXPECT_EQ(p[0], kObexPut);
      EXPECT_EQ(LengthOf(p), c.lengths[i]) << c.body << " packet " << i;
      EXPECT_EQ(p.size(), c.lengths[i]);
      EXPECT_EQ(p[3], kHeaderBody);
      EXPECT_EQ(std::size_t(p[4] << 8 | p[5]), p.size() - 3);
      joined.insert(joined.end(), p.begin() + 6, p.end());
    }
    EXPECT_EQ(joined, object.body) << c.body;
  }
}

TEST(ObexWire, APeerWithASmallerMaximumGetsPacketsItCanTake) {
  Bytes body(3000, 0x5A);
  auto packets = BodyPackets(body, 1024);
  ASSERT_EQ(packets.size(), 3u);
  Bytes joined;
  for (const Bytes& p : packets) {
    EXPECT_LE(p.size(), 1024u);
    EXPECT_EQ(LengthOf(p), p.size());
    joined.insert(joined.end(), p.begin() + 6, p.end());
  }
  EXPECT_EQ(joined, body);
  EXPECT_EQ(BodyPackets({}, 1024).size(), 1u);  // an empty body still has its Body header
}

TEST(ObexWire, AWrongResponseIsShownAndTheTransferStillCompletes) {
  CapturingPeer peer(0x90);  // Continue where Success is expected
  ScriptedPrompter prompter;
  CancelEvent cancel;
  EXPECT_EQ(SendVcard(Object(5), kBeamCreator, peer.Options(), cancel, prompter), 1);
  EXPECT_EQ(peer.Packets().size(), 5u);
  auto messages = prompter.Messages();
  ASSERT_EQ(messages.size(), 3u);  // CONNECT, PUT final, DISCONNECT
  EXPECT_EQ(messages[0], "SendObexPacket: Incorrect OBEX Response = 90");
}

TEST(ObexWire, NoPeerGivesUpAfterItsPatience) {
  int error = 0;
  std::uint16_t port;
  {
    Socket s = ListenOn({"127.0.0.1", 0}, error);
    port = BoundPort(s);
  }  // closed: nobody answers there
  ScriptedPrompter prompter;
  CancelEvent cancel;
  ObexSendOptions options{{"127.0.0.1", port}, 200, 250};
  EXPECT_EQ(SendVcard(Object(5), kBeamCreator, options, cancel, prompter), 0);
  ASSERT_EQ(prompter.Messages().size(), 1u);
  EXPECT_EQ(prompter.Messages()[0], "InitIrSock: Error looking for IR device. Error code: 110");
}

// A listener on an ephemeral loopback port that records what it received.
struct LoopbackReceiver {
  test::TempFolder folder;
  ScriptedPrompter prompter;
  std::vector<std::pair<ReceivedObject, std::string>> received;
  std::vector<std::string> status;
  std::promise<std::uint16_t> bound;
  ObexListener listener{prompter,
                        [this](const ReceivedObject& o, const std::string& path) {
                          received.push_back({o, test::Slurp(path)});
                        },
                        [this](std::string_view s) { status.emplace_back(s); }};

  std::uint16_t Start() {
    ListenOptions options;
    options.bind = {"127.0.0.1", 0};
    options.receive = {folder.Path("IrData.dat"), 1000, 0};
    options.idle_sleep_ms = 5;
    options.on_bound = [this](std::uint16_t port) { bound.set_value(port); };
    listener.StartListenThread2(options);
    return bound.get_future().get();
  }
};

TEST(ObexLoopback, ObjectsArriveByteForByteWithTheirNames) {
  LoopbackReceiver receiver;
  std::uint16_t port = receiver.Start();
  ScriptedPrompter prompter;
  CancelEvent cancel;
  for (std::size_t size : {std::size_t{0}, std::size_t{4072}, std::size_t{20000}}) {
    BeamObject object = Object(size);
    object.name = size == 4072 ? u"Items.qvr" : u"Items.PDB";
    object.description = u"Items: Record 3";
    ASSERT_EQ(SendVcard(object, kBeamCreator, {{"127.0.0.1", port}, 1000, 1000}, cancel, prompter),
              1);
  }
  ASSERT_TRUE(receiver.listener.StopListenThread());
  EXPECT_TRUE(prompter.Messages().empty());
  EXPECT_TRUE(receiver.prompter.Messages().empty());
  ASSERT_EQ(receiver.received.size(), 3u);
  EXPECT_EQ(receiver.received[1].first.name, u"Items.qvr");
  EXPECT_EQ(receiver.received[1].first.description, u"Items: Record 3");
  EXPECT_EQ(std::string(receiver.received[1].first.creator.data()), "Qvnt");
  for (std::size_t i = 0; i < 3; ++i) {
    std::size_t size = i == 0 ? 0 : i == 1 ? 4072 : 20000;
    EXPECT_EQ(receiver.received[i].second,
              std::string(reinterpret_cast<const char*>(Object(size).body.data()), size));
  }
  EXPECT_EQ(receiver.status[1], "Database File Received");
  EXPECT_EQ(receiver.status[3], "Database Record(s) Received");
}

// Serves one raw connection with ProcessIncoming.
int ServeRaw(const Bytes& bytes, bool close_after, ReceivedObject& object,
             ScriptedPrompter& prompter, const std::string& temp) {
  int pair[2];
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  Socket ours(pair[0]), theirs(pair[1]);
  int error = 0;
  SendAll(theirs.fd(), bytes, 1000, error);
  if (close_after) theirs = Socket();
  ObexReceiveOptions options{temp, 300, 0};
  return ProcessIncoming(ours.fd(), options, object, prompter);
}

TEST(ObexHostile, HeadersThatLieOrStallEndTheTransfer) {
  test::TempFolder folder;
  const Bytes connect = ConnectPacket();
  Bytes too_long = connect;  // a Body header claiming more than its packet holds
  for (std::uint8_t b : {0x02, 0x00, 0x09, 0x48, 0x00, 0xF0, 1, 2, 3}) too_long.push_back(b);
  Bytes half = connect;  // a packet announcing 100 bytes, then silence
  for (std::uint8_t b : {0x02, 0x00, 0x64, 0x48}) half.push_back(b);
  Bytes short_length = connect;  // a packet length below 3
  for (std::uint8_t b : {0x02, 0x00, 0x01}) short_length.push_back(b);
  struct Case {
    Bytes bytes;
    bool close;
    std::string message;
  };
  for (const Case& c :
       {Case{too_long, false, "ProcessIncoming: A header runs past the end of its packet"},
        Case{half, false, "RecvIrPacket: Multiple socket recv failed. Error: 110"},
        Case{half, true, "SendIrPacket: Sending First Packet failed. Error: 32"},
        Case{short_length, false, "RecvIrPacket: Failed to get full packet. Error: 90"},
        Case{Bytes{0x80, 0x00}, false, "RecvIrPacket: Multiple socket recv failed. Error: 110"},
        Case{Bytes{}, false, "RecvIrPacket: First socket recv failed. Error: 110"}}) {
    ScriptedPrompter prompter;
    ReceivedObject object;
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ServeRaw(c.bytes, c.close, object, prompter, folder.Path("IrData.dat")), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    ASSERT_FALSE(prompter.Messages().empty());
    EXPECT_EQ(prompter.Messages().back(), c.message);
  }
}

TEST(ObexScan, UnknownBytesAreSkippedOneAtATimeAndNamesAreByteSwapped) {
  Bytes packet{0x82, 0x00, 0x00, 0x77, 0x01, 0x00, 0x0B, 0x00, '.',  0x00, '.',  0x00, '/',
               0x00, 0x00, 0x33, 0xCF, 'Q',  'v',  'n',  't',  0x49, 0x00, 0x05, 'h',  'i'};
  ReceivedObject object;
  Bytes body;
  auto write = [&](std::span<const std::uint8_t> d) {
    body.insert(body.end(), d.begin(), d.end());
    return true;
  };
  ASSERT_EQ(ScanPacket(packet, object, write), ScanResult::Ok);
  EXPECT_EQ(object.name, u"../");
  EXPECT_TRUE(object.final);
  EXPECT_EQ(std::string(object.creator.data()), "Qvnt");
  EXPECT_EQ(body, (Bytes{'h', 'i'}));
}

}  // namespace
}  // namespace qv
