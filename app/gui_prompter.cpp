#include "app/gui_prompter.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>

namespace qv::app {

namespace {

QString Text(std::string_view s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

QMessageBox::Icon BoxIcon(Icon icon) {
  switch (icon) {
    case Icon::Information:
      return QMessageBox::Information;
    case Icon::Exclamation:
    case Icon::Warning:
      return QMessageBox::Warning;
    case Icon::Error:
      return QMessageBox::Critical;
    case Icon::Question:
      return QMessageBox::Question;
    case Icon::None:
      break;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons BoxButtons(Buttons buttons) {
  switch (buttons) {
    case Buttons::Ok:
      return QMessageBox::Ok;
    case Buttons::OkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case Buttons::YesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

// A short text makes a narrow box whose title bar cuts the caption off; the box is made wide
// enough for its caption.
void FitCaption(QMessageBox& box, const QString& caption) {
  auto* grid = qobject_cast<QGridLayout*>(box.layout());
  if (!grid) return;
  int wanted = std::max(240, box.fontMetrics().horizontalAdvance(caption) + 140);
  grid->addItem(new QSpacerItem(wanted, 0, QSizePolicy::Minimum, QSizePolicy::Expanding),
                grid->rowCount(), 0, 1, grid->columnCount());
}

}  // namespace

void GuiPrompter::message(std::string_view text, std::string_view caption, Icon icon) {
  QMessageBox box(BoxIcon(icon), Text(caption), Text(text), QMessageBox::Ok, parent_);
  FitCaption(box, Text(caption));
  // A message must be readable even while a long operation has the wait cursor up.
  if (busy_depth_) QApplication::restoreOverrideCursor();
  box.exec();
  if (busy_depth_) QApplication::setOverrideCursor(Qt::WaitCursor);
}

Answer GuiPrompter::ask(std::string_view text, std::string_view caption, Buttons buttons,
                        Icon icon) {
  QMessageBox box(BoxIcon(icon), Text(caption), Text(text), BoxButtons(buttons), parent_);
  FitCaption(box, Text(caption));
  if (busy_depth_) QApplication::restoreOverrideCursor();
  int result = box.exec();
  if (busy_depth_) QApplication::setOverrideCursor(Qt::WaitCursor);
  switch (result) {
    case QMessageBox::Ok:
      return Answer::Ok;
    case QMessageBox::Yes:
      return Answer::Yes;
    case QMessageBox::No:
      return Answer::No;
    default:
      break;
  }
  // Closing the box by its title bar counts as the safest answer the buttons offer.
  return buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
}

void GuiPrompter::progress(std::string_view text) {
  if (status_) status_(Text(text));
}

void GuiPrompter::busy(bool on) {
  if (on) {
    if (busy_depth_++ == 0) QApplication::setOverrideCursor(Qt::WaitCursor);
  } else if (busy_depth_ > 0) {
    if (--busy_depth_ == 0) {
      QApplication::restoreOverrideCursor();
      if (status_) status_(QString());
    }
  }
}

}  // namespace qv::app
