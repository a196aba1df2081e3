#include "app/note_label.h"

#include <QPalette>

namespace qv::app {

QLabel* Note(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setWordWrap(true);
  QPalette p = label->palette();
  p.setColor(QPalette::WindowText, p.color(QPalette::PlaceholderText));
  label->setPalette(p);
  return label;
}

}  // namespace qv::app
