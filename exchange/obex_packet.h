#pragma once
// OBEX packets as this program builds and reads them: opcode or response byte, a 2-byte
// big-endian length of the whole packet, then the CONNECT fields or the headers.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/bytes.h"

namespace qv {

inline constexpr std::uint8_t kObexConnect = 0x80;
inline constexpr std::uint8_t kObexPut = 0x02;
inline constexpr std::uint8_t kObexPutFinal = 0x82;
inline constexpr std::uint8_t kObexDisconnect = 0x81;
inline constexpr std::uint8_t kObexContinue = 0x90;
inline constexpr std::uint8_t kObexSuccess = 0xA0;

inline constexpr std::uint8_t kHeaderName = 0x01;
inline constexpr std::uint8_t kHeaderDescription = 0x05;
inline constexpr std::uint8_t kHeaderBody = 0x48;
inline constexpr std::uint8_t kHeaderEndOfBody = 0x49;
inline constexpr std::uint8_t kHeaderLength = 0xC3;
inline constexpr std::uint8_t kHeaderCreator = 0xCF;

// The maximum packet length the sender offers, and its packet buffer.
inline constexpr std::size_t kObexPacketSize = 4072;
// Body bytes in a full body packet: the packet less its 3-byte start and 3-byte Body header.
inline constexpr std::size_t kObexBodyChunk = 4066;
// The largest packet a 2-byte length can describe; the receive buffer is this big.
inline constexpr std::size_t kObexLargestPacket = 0xFFFF;
// A received object larger than this is refused.
inline constexpr std::uint64_t kObexLargestObject = 64ull << 20;

// One header item of an object to send. Texts are sent as UTF-16 big-endian characters with a
// terminating zero character.
struct ObexItem {
  std::uint8_t id = 0;
  std::u16string text;                 // Name, Description
  std::uint32_t value = 0;             // Length; creator code (first character high)
  std::span<const std::uint8_t> data;  // Body
};

Bytes ConnectPacket();     // 80 00 07 10 00 0F E8
Bytes PutFinalPacket();    // 82 00 06 49 00 03: an empty End of Body
Bytes DisconnectPacket();  // 81 00 03
// The first PUT: every item except the Body, in the order given. Nothing when the headers do
// not fit one packet.
std::optional<Bytes> FirstPutPacket(const std::vector<ObexItem>& items);
// The PUT packets carrying the body. A body of up to 4072 bytes goes in one packet of body + 6
// bytes, so bodies of 4067 to 4072 bytes make a packet longer than the 4072 offered: kept on
// purpose, other editions expect it. Longer bodies go in 4066-byte chunks. A peer that
// announced a smaller maximum packet (OBEX allows down to 255) gets packets of at most that.
std::vector<Bytes> BodyPackets(std::span<const std::uint8_t> body,
                               std::size_t peer_max = kObexPacketSize);

// The 4 creator-code characters as the Creator item's value.
std::uint32_t CreatorValue(std::string_view code);

// What a receiver learns of an object from its headers.
struct ReceivedObject {
  std::u16string name;
  std::u16string description;
  std::array<char, 5> creator{};  // 4 characters and a zero
  bool final = false;             // the PUT final was seen
  std::uint64_t length = 0;       // body bytes received
};

enum class ScanResult { Ok, BadHeader, TooLarge, WriteFailed };

// Scans one received packet as the listener does: a PUT or PUT final opcode at byte 0 skips the
// packet start; Name and Description are read with each character pair byte-swapped; Body and
// End of Body content goes to `write`; Length skips 5 bytes, Creator keeps 4; any other byte
// advances the scan by one. A header whose length runs past the packet is BadHeader.
ScanResult ScanPacket(std::span<const std::uint8_t> packet, ReceivedObject& object,
                      const std::function<bool(std::span<const std::uint8_t>)>& write);

// UTF-8 to UTF-16 and back (invalid sequences become U+FFFD).
std::u16string Utf8ToUtf16(std::string_view text);
std::string Utf16ToUtf8(std::u16string_view text);

}  // namespace qv
