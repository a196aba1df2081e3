#pragma once
// The lists' font: bold "Arial" 9 point, as the handheld lists, where Arial (or a metric
// twin) is installed; never smaller than the font the user's desktop is set to.

#include <QFont>

namespace qv::app {

QFont BoldListFont(const QFont& desktop);

}  // namespace qv::app
