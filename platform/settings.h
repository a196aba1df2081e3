#pragma once
// The program's persistent preferences. Every value is a string, as the handheld registry kept
// them; keys keep their original names ("AutoSave", "LastFile0", "Alarms/3/DBPath").

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

class Settings {
 public:
  virtual ~Settings() = default;
  // The value, or nothing when it is missing or unreadable (the caller keeps its default).
  virtual std::optional<std::string> read(std::string_view key) const = 0;
  // Write failures are ignored by design: a preference that cannot be stored is not an error.
  virtual void write(std::string_view key, std::string_view value) = 0;
  virtual void remove(std::string_view key) = 0;
  // The names of the groups directly under `group` ("Alarms" gives "3", "17" ...), as the
  // registry enumerates subkeys.
  virtual std::vector<std::string> SubKeys(std::string_view group) const = 0;
};

// Reads an integer preference written with "%d"; missing or malformed values give the default.
int ReadIntSetting(const Settings& settings, std::string_view key, int fallback);
void WriteIntSetting(Settings& settings, std::string_view key, int value);

}  // namespace qv
