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

void QtSettings::sync() { settings_->sync(); }

}  // namespace qv
