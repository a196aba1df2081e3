#pragma once
// The rule every reader of values follows: enciphered bytes are never taken as a value. A
// record whose body or marked fields are still enciphered in memory (no password was given, or
// it did not decipher them) is left out by list-wide readers, which say how many they left
// out, and shown as enciphered value by value where a record is displayed.

#include <cstdint>
#include <span>
#include <string>

#include "engine/database.h"
#include "engine/format.h"

namespace qv {

inline constexpr const char* kEncipheredValueText = "(enciphered)";

// Whether the record's body or its marked fields are enciphered.
bool IsRecordEnciphered(std::span<const std::uint8_t> record);
bool IsRecordEnciphered(const Database& db, std::uint32_t number);

// Whether slot k's value of record `number` is enciphered: every value of a record whose body
// is enciphered, the marked fields' values of a record whose marked fields are.
bool IsValueEnciphered(const Database& db, std::uint32_t number, int slot);

// The value's display text, or "(enciphered)" for an enciphered value.
std::string ShownValueText(const Database& db, std::uint32_t number, int slot,
                           const FormatOptions& options);

// How many of the given records (all of them when `numbers` is empty) are enciphered.
std::size_t CountEnciphered(const Database& db, std::span<const std::uint32_t> numbers);
std::size_t CountEnciphered(const Database& db);

// What a reader says after it left records out: "left out 3 enciphered records (no password
// given deciphers them)". Empty for none.
std::string LeftOutText(std::size_t count);

}  // namespace qv
