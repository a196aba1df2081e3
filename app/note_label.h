#pragma once
// The quiet explanatory line under a group of controls in the editing dialogs.

#include <QLabel>
#include <QString>

namespace qv::app {

// A word-wrapped label in the placeholder colour.
QLabel* Note(const QString& text, QWidget* parent);

}  // namespace qv::app
