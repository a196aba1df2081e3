#include "platform/qt/qt_paths.h"

#include <QDir>
#include <QStandardPaths>

namespace qv {

std::string QtPaths::DocumentsFolder() const {
  QByteArray home = qgetenv("QUORVANT_HOME");
  if (!home.isEmpty()) return QDir(QString::fromLocal8Bit(home)).absolutePath().toStdString();
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation).toStdString();
}

std::string QtPaths::DataFolder() const {
  QByteArray home = qgetenv("QUORVANT_HOME");
  if (!home.isEmpty()) return QDir(QString::fromLocal8Bit(home)).absolutePath().toStdString();
  return DocumentsFolder() + "/Quorvant3";
}

std::string QtPaths::TempFolder() const {
  QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (runtime.isEmpty()) runtime = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
  return runtime.toStdString();
}

}  // namespace qv
