#include "app/list_font.h"

#include <QStringList>
#include <algorithm>

namespace qv::app {

QFont BoldListFont(const QFont& desktop) {
  QFont font = desktop;
  font.setFamilies({"Arial", "Liberation Sans", desktop.family()});
  // A desktop set to a larger font for legibility keeps its size.
  if (desktop.pointSizeF() > 0) font.setPointSizeF(std::max(9.0, desktop.pointSizeF()));
  font.setBold(true);
  return font;
}

}  // namespace qv::app
