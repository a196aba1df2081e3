#pragma once
// SAFER SK-128: the strengthened key schedule with a 128-bit key, 10 rounds on 8-byte blocks.
// Keys come from passwords typed by the user; see MakeKey for the padding rule.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qv {

inline constexpr int kSaferRounds = 10;
inline constexpr std::size_t kSaferBlockSize = 8;
// Byte 0 the round count, then 2 x rounds + 1 subkeys of 8 bytes.
inline constexpr std::size_t kExpandedKeySize = 1 + kSaferBlockSize * (2 * kSaferRounds + 1);

using ExpandedKey = std::array<std::uint8_t, kExpandedKeySize>;
using UserKey = std::array<std::uint8_t, 16>;

// The 16-byte key of a password: the password, a space, the password again ... cut at 16 bytes
// (so "abc" gives "abc abc abc abc "); the empty password gives 16 spaces.
UserKey PadPassword(std::string_view password);

// The strengthened schedule for 10 rounds over a 16-byte user key (half 1 = bytes 0..7, half 2 =
// bytes 8..15). The first subkey is half 2 unchanged.
ExpandedKey ExpandKey(const UserKey& user_key);

// ExpandKey(PadPassword(password)).
ExpandedKey MakeKey(std::string_view password);

// One block in place.
void EncryptBlock(std::uint8_t* block, const ExpandedKey& key);
void DecryptBlock(std::uint8_t* block, const ExpandedKey& key);

}  // namespace qv
