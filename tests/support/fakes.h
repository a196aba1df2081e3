#pragma once
// In-memory settings, a fixed clock and fixed locales for tests.

#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settings.h"

namespace qv::test {

class MemorySettings : public Settings {
 public:
  std::optional<std::string> read(std::string_view key) const override {
    auto it = values.find(std::string(key));
    if (it == values.end()) return std::nullopt;
    return it->second;
  }
  void write(std::string_view key, std::string_view value) override {
    values[std::string(key)] = std::string(value);
  }
  void remove(std::string_view key) override {
    // Like the registry and QSettings, removing a group removes everything under it.
    std::string group = std::string(key) + "/";
    for (auto it = values.begin(); it != values.end();)
      it = it->first == key || it->first.starts_with(group) ? values.erase(it) : std::next(it);
  }
  std::vector<std::string> SubKeys(std::string_view group) const override {
    std::set<std::string> names;
    std::string prefix = std::string(group) + "/";
    for (const auto& [key, value] : values) {
      if (!key.starts_with(prefix)) continue;
      std::size_t slash = key.find('/', prefix.size());
      if (slash != std::string::npos) names.insert(key.substr(prefix.size(), slash - prefix.size()));
    }
    return {names.begin(), names.end()};
  }
  std::map<std::string, std::string> values;
};

class FixedClock : public Clock {
 public:
  explicit FixedClock(std::int64_t now = 1700000000) : now(now) {}
  std::int64_t LocalNow() const override { return now; }
  std::int64_t now;
};

// dd/MM/yyyy and a 24-hour HH:mm:ss clock.
inline FormatOptions EuropeanOptions() {
  FormatOptions o;
  o.locale.short_date = "dd/MM/yyyy";
  o.locale.date_separator = "/";
  o.locale.time_format = "HH:mm:ss";
  o.locale.time_separator = ":";
  o.time_code = 2;
  return o;
}

// M/d/yyyy and a 12-hour h:mm:ss tt clock.
inline FormatOptions UsOptions() {
  FormatOptions o;
  o.locale.short_date = "M/d/yyyy";
  o.locale.time_format = "h:mm:ss tt";
  o.time_code = 1;
  return o;
}

}  // namespace qv::test
