#include "platform/qt/qt_settings.h"

namespace qv {

namespace {
QString Key(std::string_view key) { return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())); }
}  // namespace

QtSettings::QtSettings()
    : settings_(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                            "Quorvant3", "Quorvant3")) {}

QtSettings::QtSettings(const QString& file)
    : settings_(std::make_unique<QSettings>(file, QSettings::IniFormat)) {}

std::optional<std::string> QtSettings::read(std::string_view key) const {
  QVariant value = settings_->value(Key(key));
  if (!value.isValid()) return std::nullopt;
  return value.toString().toStdString();
}

void QtSettings::write(std::string_view key, std::string_view value) {
  settings_->setValue(Key(key), QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())));
}

void QtSettings::remove(std::string_view key) { settings_->remove(Key(key)); }

std::vector<std::string> QtSettings::SubKeys(std::string_view group) const {
  settings_->beginGroup(Key(group));
  const QStringList names = settings_->childGroups();
  settings_->endGroup();
  std::vector<std::string> out;
  for (const QString& name : names) out.push_back(name.toStdString());
  return out;
}

void QtSettings::sync() { settings_->sync(); }

}  // namespace qv
