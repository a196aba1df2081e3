#pragma once
// The encoding of text files the program writes and reads. Databases keep Windows-1252; files
// for other programs are UTF-8 unless the user asks for the bytes as stored.

#include <string>
#include <string_view>

#include "engine/text.h"

namespace qv {

enum class TextEncoding { Utf8, Cp1252 };

inline bool IsAscii(std::string_view text) {
  for (char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// Stored (Windows-1252) text as it goes into a file of this encoding.
inline std::string EncodeForFile(std::string_view stored, TextEncoding encoding) {
  return encoding == TextEncoding::Utf8 && !IsAscii(stored) ? Cp1252ToUtf8(stored)
                                                            : std::string(stored);
}
// File text of this encoding as the database stores it.
inline std::string DecodeFromFile(std::string_view text, TextEncoding encoding) {
  return encoding == TextEncoding::Utf8 && !IsAscii(text) ? Utf8ToCp1252(text) : std::string(text);
}

}  // namespace qv
