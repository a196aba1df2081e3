#include "app/recent_files.h"

#include <utility>

#include "engine/text.h"

namespace qv::app {

namespace {
std::string Key(int k) { return StringPrintf("LastFile%d", k); }
}  // namespace

std::array<std::string, kRecentFiles> ReadRecentFiles(const Settings& settings) {
  std::array<std::string, kRecentFiles> files;
  for (int k = 0; k < kRecentFiles; ++k) files[k] = settings.read(Key(k)).value_or("");
  return files;
}

void AddRecentFile(Settings& settings, std::string_view path) {
  auto files = ReadRecentFiles(settings);
  int found = kRecentFiles - 1;
  bool known = false;
  for (int k = 0; k < kRecentFiles; ++k) {
    if (!files[k].empty() && EqualsNoCase(files[k], path)) {
      found = k;
      known = true;
      break;
    }
  }
  if (!known) files[found] = std::string(path);
  // Successive swaps with the entry above: the entries before it each move down one place.
  for (int k = found; k > 0; --k) std::swap(files[k], files[k - 1]);
  for (int k = 0; k < kRecentFiles; ++k) settings.write(Key(k), files[k]);
}

std::optional<std::string> GetRecentFile(const Settings& settings, int k) {
  if (k < 0 || k >= kRecentFiles) return std::nullopt;
  return settings.read(Key(k));
}

}  // namespace qv::app
