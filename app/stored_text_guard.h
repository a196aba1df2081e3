#pragma once
// Databases keep Windows-1252 text. The editors refuse a letter that the file cannot hold as it is
// typed or pasted (with a beep), rather than storing "?" in its place behind the user's back.

#include <QString>

class QWidget;

namespace qv::app {

// Whether the text can be stored exactly.
bool StorableText(const QString& text);
// Guards every line and text editor inside `root` (the ones there now).
void GuardStoredTexts(QWidget* root);

}  // namespace qv::app
