#include "security/safer.h"

namespace qv {

namespace {

struct Tables {
  std::array<std::uint8_t, 256> exp{};
  std::array<std::uint8_t, 256> log{};
};

// exp[x] = 45^x mod 257 (256 kept as 0), log its inverse.
constexpr Tables MakeTables() {
  Tables t;
  unsigned value = 1;
  for (unsigned x = 0; x < 256; ++x) {
    std::uint8_t e = static_cast<std::uint8_t>(value & 0xFF);
    t.exp[x] = e;
    t.log[e] = static_cast<std::uint8_t>(x);
    value = (value * 45) % 257;
  }
  return t;
}

constexpr Tables kTables = MakeTables();
constexpr const std::uint8_t* kExp = kTables.exp.data();
constexpr const std::uint8_t* kLog = kTables.log.data();
static_assert(kTables.exp[0] == 1 && kTables.exp[1] == 45 && kTables.exp[128] == 0);

constexpr std::uint8_t Rotl(std::uint8_t v, int n) {
  return static_cast<std::uint8_t>((v << n) | (v >> (8 - n)));
}

// Pseudo-Hadamard transform: (a, b) -> (2a + b, a + b).
inline void Pht(std::uint8_t& a, std::uint8_t& b) {
  b = static_cast<std::uint8_t>(b + a);
  a = static_cast<std::uint8_t>(a + b);
}
inline void InversePht(std::uint8_t& a, std::uint8_t& b) {
  a = static_cast<std::uint8_t>(a - b);
  b = static_cast<std::uint8_t>(b - a);
}

}  // namespace

UserKey PadPassword(std::string_view password) {
  UserKey key;
  key.fill(' ');
  if (password.empty()) return key;
  // Repeating the password (with a space after each copy) is the format's rule, not a
  // stand-in for space padding.
  std::size_t at = 0;
  while (at < key.size()) {
    for (char c : password) {
      if (at == key.size()) return key;
      key[at++] = static_cast<std::uint8_t>(c);
    }
    if (at == key.size()) return key;
    key[at++] = ' ';
  }
  return key;
}

ExpandedKey ExpandKey(const UserKey& user_key) {
  constexpr int kRegister = kSaferBlockSize + 1;
  ExpandedKey out{};
  std::uint8_t ka[kRegister], kb[kRegister];
  ka[8] = kb[8] = 0;
  std::size_t at = 0;
  out[at++] = kSaferRounds;
  for (int j = 0; j < 8; ++j) {
    ka[j] = Rotl(user_key[j], 5);
    ka[8] ^= ka[j];
    kb[j] = user_key[8 + j];
    kb[8] ^= kb[j];
    out[at++] = kb[j];
  }
  for (int i = 1; i <= kSaferRounds; ++i) {
    for (int j = 0; j < kRegister; ++j) {
      ka[j] = Rotl(ka[j], 6);
      kb[j] = Rotl(kb[j], 6);
    }
    for (int j = 0; j < 8; ++j)
      out[at++] = static_cast<std::uint8_t>(ka[(j + 2 * i - 1) % kRegister] +
                                            kExp[kExp[(18 * i + j + 1) & 0xFF]]);
    for (int j = 0; j < 8; ++j)
      out[at++] = static_cast<std::uint8_t>(kb[(j + 2 * i) % kRegister] +
                                            kExp[kExp[(18 * i + j + 10) & 0xFF]]);
  }
  return out;
}

ExpandedKey MakeKey(std::string_view password) {
  return ExpandKey(PadPassword(password));
}

void EncryptBlock(std::uint8_t* block, const ExpandedKey& key) {
  std::uint8_t a = block[0], b = block[1], c = block[2], d = block[3];
  std::uint8_t e = block[4], f = block[5], g = block[6], h = block[7];
  const std::uint8_t* k = key.data() + 1;
  for (int round = 0; round < kSaferRounds; ++round, k += 16) {
    a = static_cast<std::uint8_t>(kExp[a ^ k[0]] + k[8]);
    b = kLog[static_cast<std::uint8_t>(b + k[1])] ^ k[9];
    c = kLog[static_cast<std::uint8_t>(c + k[2])] ^ k[10];
    d = static_cast<std::uint8_t>(kExp[d ^ k[3]] + k[11]);
    e = static_cast<std::uint8_t>(kExp[e ^ k[4]] + k[12]);
    f = kLog[static_cast<std::uint8_t>(f + k[5])] ^ k[13];
    g = kLog[static_cast<std::uint8_t>(g + k[6])] ^ k[14];
    h = static_cast<std::uint8_t>(kExp[h ^ k[7]] + k[15]);
    Pht(a, b), Pht(c, d), Pht(e, f), Pht(g, h);
    Pht(a, c), Pht(e, g), Pht(b, d), Pht(f, h);
    Pht(a, e), Pht(b, f), Pht(c, g), Pht(d, h);
    // The shuffle that ends each round: b c d e f g -> e b f c g d.
    std::uint8_t t = b;
    b = e, e = c, c = t;
    t = d, d = f, f = g, g = t;
  }
  block[0] = a ^ k[0];
  block[1] = static_cast<std::uint8_t>(b + k[1]);
  block[2] = static_cast<std::uint8_t>(c + k[2]);
  block[3] = d ^ k[3];
  block[4] = e ^ k[4];
  block[5] = static_cast<std::uint8_t>(f + k[5]);
  block[6] = static_cast<std::uint8_t>(g + k[6]);
  block[7] = h ^ k[7];
}

void DecryptBlock(std::uint8_t* block, const ExpandedKey& key) {
  const std::uint8_t* k = key.data() + 1 + kSaferBlockSize * 2 * kSaferRounds;
  std::uint8_t a = block[0] ^ k[0];
  std::uint8_t b = static_cast<std::uint8_t>(block[1] - k[1]);
  std::uint8_t c = static_cast<std::uint8_t>(block[2] - k[2]);
  std::uint8_t d = block[3] ^ k[3];
  std::uint8_t e = block[4] ^ k[4];
  std::uint8_t f = static_cast<std::uint8_t>(block[5] - k[5]);
  std::uint8_t g = static_cast<std::uint8_t>(block[6] - k[6]);
  std::uint8_t h = block[7] ^ k[7];
  for (int round = 0; round < kSaferRounds; ++round) {
    k -= 16;
    std::uint8_t t = e;
    e = b, b = c, c = t;
    t = f, f = d, d = g, g = t;
    InversePht(a, e), InversePht(b, f), InversePht(c, g), InversePht(d, h);
    InversePht(a, c), InversePht(e, g), InversePht(b, d), InversePht(f, h);
    InversePht(a, b), InversePht(c, d), InversePht(e, f), InversePht(g, h);
    a = kLog[static_cast<std::uint8_t>(a - k[8])] ^ k[0];
    b = static_cast<std::uint8_t>(kExp[b ^ k[9]] - k[1]);
    c = static_cast<std::uint8_t>(kExp[c ^ k[10]] - k[2]);
    d = kLog[static_cast<std::uint8_t>(d - k[11])] ^ k[3];
    e = kLog[static_cast<std::uint8_t>(e - k[12])] ^ k[4];
    f = static_cast<std::uint8_t>(kExp[f ^ k[13]] - k[5]);
    g = static_cast<std::uint8_t>(kExp[g ^ k[14]] - k[6]);
    h = kLog[static_cast<std::uint8_t>(h - k[15])] ^ k[7];
  }
  block[0] = a, block[1] = b, block[2] = c, block[3] = d;
  block[4] = e, block[5] = f, block[6] = g, block[7] = h;
}

}  // namespace qv
