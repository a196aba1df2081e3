#pragma once
// Preferences in an INI file, Quorvant3/Quorvant3.conf under the XDG config folder.

#include <QSettings>
#include <memory>

#include "platform/settings.h"

namespace qv {

class QtSettings : public Settings {
 public:
  QtSettings();
  // An INI file at an explicit path (tests, portable use).
  explicit QtSettings(const QString& file);
  std::optional<std::string> read(std::string_view key) const override;
  void write(std::string_view key, std::string_view value) override;
  void remove(std::string_view key) override;
  std::vector<std::string> SubKeys(std::string_view group) const override;
  void sync();

 private:
  std::unique_ptr<QSettings> settings_;
};

}  // namespace qv
