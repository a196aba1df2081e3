#pragma once
// The recent-files list kept in the settings as LastFile0 (most recent) .. LastFile9.

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings.h"

namespace qv::app {

inline constexpr int kRecentFiles = 10;

// All ten entries; missing ones are empty.
std::array<std::string, kRecentFiles> ReadRecentFiles(const Settings& settings);
// Moves `path` to the head of the list (paths equal but for case are the same file), or inserts
// it there, dropping the oldest entry. All ten values are written back, empty ones included.
void AddRecentFile(Settings& settings, std::string_view path);
// LastFile`k`, or nothing when the value is missing or k is out of range.
std::optional<std::string> GetRecentFile(const Settings& settings, int k);

}  // namespace qv::app
