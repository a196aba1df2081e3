#include "app/help_page.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QUrl>

// The resources live in a static library; naming them here keeps the linker from dropping them.
static void LoadHelpResources() { Q_INIT_RESOURCE(quorvant); }

namespace qv::app {

std::string HelpPagePath(const Paths& paths) {
  QString folder = QString::fromStdString(paths.TempFolder());
  if (folder.isEmpty()) folder = QDir::tempPath();
  return QDir(folder).filePath("quorvant.htm").toStdString();
}

bool OpenHelpPage(const Paths& paths) {
  LoadHelpResources();
  QString target = QString::fromStdString(HelpPagePath(paths));
  QFile source(":/help/quorvant.htm");
  if (!source.open(QIODevice::ReadOnly)) return false;
  QFile out(target);
  if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  if (out.write(source.readAll()) < 0) return false;
  out.close();
  QUrl url = QUrl::fromLocalFile(target);
  url.setFragment("Main_Contents");
  return QDesktopServices::openUrl(url);
}

}  // namespace qv::app
