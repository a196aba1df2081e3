#include "exchange/obex_packet.h"

namespace qv {

namespace {

void Put16(Bytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value >> 8));
  out.push_back(static_cast<std::uint8_t>(value));
}

void Put32(Bytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
}

std::size_t Get16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::size_t>(bytes[at]) << 8 | bytes[at + 1];
}

void PutText(Bytes& out, std::uint8_t id, const std::u16string& text) {
  out.push_back(id);
  Put16(out, 2 * text.size() + 5);
  for (char16_t c : text) Put16(out, c);
  Put16(out, 0);
}

// The characters up to the first zero, each pair byte-swapped from network order.
std::u16string ReadText(std::span<const std::uint8_t> content) {
  std::u16string text;
  for (std::size_t i = 0; i + 1 < content.size(); i += 2) {
    char16_t c = static_cast<char16_t>(content[i] << 8 | content[i + 1]);
    if (c == 0) break;
    text.push_back(c);
  }
  return text;
}

Bytes BodyPacket(std::span<const std::uint8_t> chunk, std::size_t packet_length) {
  Bytes packet{kObexPut};
  Put16(packet, packet_length);
  packet.push_back(kHeaderBody);
  Put16(packet, chunk.size() + 3);
  packet.insert(packet.end(), chunk.begin(), chunk.end());
  return packet;
}

}  // namespace

Bytes ConnectPacket() {
  return {kObexConnect, 0x00, 0x07, 0x10, 0x00, 0x0F, 0xE8};
}
Bytes PutFinalPacket() {
  return {kObexPutFinal, 0x00, 0x06, kHeaderEndOfBody, 0x00, 0x03};
}
Bytes DisconnectPacket() {
  return {kObexDisconnect, 0x00, 0x03};
}

std::optional<Bytes> FirstPutPacket(const std::vector<ObexItem>& items) {
  Bytes packet{kObexPut, 0, 0};
  for (const ObexItem& item : items) {
    if (item.id == kHeaderName || item.id == kHeaderDescription) {
      PutText(packet, item.id, item.text);
    } else if (item.id == kHeaderLength || item.id == kHeaderCreator) {
      packet.push_back(item.id);
      Put32(packet, item.value);
    }  // the Body goes in packets of its own
  }
  if (packet.size() > kObexPacketSize) return std::nullopt;
  packet[1] = static_cast<std::uint8_t>(packet.size() >> 8);
  packet[2] = static_cast<std::uint8_t>(packet.size());
  return packet;
}

std::vector<Bytes> BodyPackets(std::span<const std::uint8_t> body, std::size_t peer_max) {
  const bool small_peer = peer_max < kObexPacketSize;
  if (!small_peer && body.size() <= kObexPacketSize) return {BodyPacket(body, body.size() + 6)};
  const std::size_t packet_size =
      small_peer ? std::max<std::size_t>(peer_max, 255) : kObexPacketSize;
  const std::size_t full_chunk = packet_size - 6;
  std::vector<Bytes> packets;
  for (std::size_t at = 0; at < body.size() || packets.empty();) {
    std::size_t rest = body.size() - at;
    std::size_t chunk = std::min(rest, full_chunk);
    packets.push_back(
        BodyPacket(body.subspan(at, chunk), rest > full_chunk ? packet_size : chunk + 6));
    at += chunk;
  }
  return packets;
}

std::uint32_t CreatorValue(std::string_view code) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<std::uint8_t>(i < code.size() ? code[i] : 0);
  return value;
}

ScanResult ScanPacket(std::span<const std::uint8_t> packet, ReceivedObject& object,
                      const std::function<bool(std::span<const std::uint8_t>)>& write) {
  std::size_t i = 0;
  if (!packet.empty() && (packet[0] == kObexPut || packet[0] == kObexPutFinal)) {
    object.final = object.final || packet[0] == kObexPutFinal;
    i = 3;
  }
  while (i < packet.size()) {
    std::uint8_t id = packet[i];
    if (id == kHeaderName || id == kHeaderDescription || id == kHeaderBody ||
        id == kHeaderEndOfBody) {
      if (i + 3 > packet.size()) return ScanResult::BadHeader;
      std::size_t length = Get16(packet, i + 1);
      if (length < 3 || length > packet.size() - i) return ScanResult::BadHeader;
      auto content = packet.subspan(i + 3, length - 3);
      if (id == kHeaderName) object.name = ReadText(content);
      if (id == kHeaderDescription) object.description = ReadText(content);
      if (id == kHeaderBody || id == kHeaderEndOfBody) {
        if (object.length + content.size() > kObexLargestObject) return ScanResult::TooLarge;
        if (!content.empty() && !write(content)) return ScanResult::WriteFailed;
        object.length += content.size();
      }
      i += length;
    } else if (id == kHeaderLength) {
      i += 5;
    } else if (id == kHeaderCreator) {
      if (i + 5 > packet.size()) return ScanResult::BadHeader;
      for (int k = 0; k < 4; ++k) object.creator[k] = static_cast<char>(packet[i + 1 + k]);
      i += 5;
    } else {
      ++i;  // unknown bytes are skipped one at a time, as the other editions do
    }
  }
  return ScanResult::Ok;
}

std::u16string Utf8ToUtf16(std::string_view text) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size();) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
    char32_t cp = extra == 0 ? c : extra == 1 ? c & 0x1F : extra == 2 ? c & 0x0F : c & 0x07;
    bool ok = extra >= 0 && i + static_cast<std::size_t>(extra) < text.size();
    for (int k = 1; ok && k <= extra; ++k) {
      unsigned char d = static_cast<unsigned char>(text[i + k]);
      ok = (d & 0xC0) == 0x80;
      cp = cp << 6 | (d & 0x3F);
    }
    if (!ok || cp > 0x10FFFF) {
      out.push_back(0xFFFD);
      ++i;
      continue;
    }
    i += extra + 1;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
  }
  return out;
}

std::string Utf16ToUtf8(std::u16string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (cp >= 0xD800 && cp < 0xE000) {
      cp = 0xFFFD;
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | cp >> 6));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | cp >> 12));
      out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | cp >> 18));
      out.push_back(static_cast<char>(0x80 | (cp >> 12 & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

}  // namespace qv
