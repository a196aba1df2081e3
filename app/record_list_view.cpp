#include "app/record_list_view.h"

#include <QHeaderView>
#include <QKeyEvent>

#include "app/list_font.h"

namespace qv::app {

RecordListView::RecordListView(QWidget* parent) : QTableView(parent) {
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setAlternatingRowColors(true);
  setShowGrid(false);
  setWordWrap(false);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setFont(BoldListFont(font()));
  QHeaderView* rows = verticalHeader();
  rows->setVisible(false);
  rows->setSectionResizeMode(QHeaderView::Fixed);
  rows->setDefaultSectionSize(fontMetrics().height() + 8);
  QHeaderView* columns = horizontalHeader();
  columns->setSectionsClickable(true);
  columns->setHighlightSections(false);
  columns->setStretchLastSection(false);
  columns->setSectionResizeMode(QHeaderView::Interactive);
  columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  columns->setMinimumSectionSize(0);
}

void RecordListView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Menu ||
      (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier)) {
    emit columnMenuRequested();
    return;
  }
  const Qt::KeyboardModifiers mods = event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
  if (mods == Qt::NoModifier) {
    if (event->key() == Qt::Key_Backspace) {
      emit backspaceTyped();
      return;
    }
    const QString text = event->text();
    if (text.size() == 1) {
      QChar c = text.at(0);
      if (c.isLetterOrNumber() || c == QLatin1Char(' ') || c.isPunct() || c.isSymbol()) {
        emit characterTyped(c);
        return;
      }
    }
  }
  QTableView::keyPressEvent(event);
}

}  // namespace qv::app
