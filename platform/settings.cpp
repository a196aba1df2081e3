#include "platform/settings.h"

#include <cstdlib>
#include <string>

namespace qv {

int ReadIntSetting(const Settings& settings, std::string_view key, int fallback) {
  auto text = settings.read(key);
  if (!text || text->empty()) return fallback;
  return std::atoi(text->c_str());
}

void WriteIntSetting(Settings& settings, std::string_view key, int value) {
  settings.write(key, std::to_string(value));
}

}  // namespace qv
