#include "app/report_dialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "engine/text.h"
#include "processing/report.h"

namespace qv::app {

ReportDialog::ReportDialog(const std::string& text, QWidget* parent)
    : QDialog(parent), text_(text) {
  setWindowTitle(tr("Report"));
  view_ = new QPlainTextEdit(this);
  QPlainTextEdit* view = view_;
  view->setReadOnly(true);
  view->setLineWrapMode(QPlainTextEdit::NoWrap);
  // "Courier" where it is installed, else the system's fixed-pitch font.
  QFont courier = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  courier.setFamilies({"Courier", "Courier New", courier.family()});
  courier.setStyleHint(QFont::TypeWriter);
  view->setFont(courier);
  // Tab stops ten characters apart line every report's values up in one column.
  view->setTabStopDistance(QFontMetricsF(courier).horizontalAdvance(' ') * 10);
  view->setPlainText(QString::fromStdString(text).remove('\r'));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  QPushButton* copy = buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole);
  QPushButton* save = buttons->addButton(tr("&Save..."), QDialogButtonBox::ActionRole);
  connect(copy, &QPushButton::clicked, this,
          [view] { QGuiApplication::clipboard()->setText(view->toPlainText()); });
  connect(save, &QPushButton::clicked, this, &ReportDialog::Save);
  copy->setAutoDefault(false);
  save->setAutoDefault(false);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(view);
  layout->addWidget(buttons);
  resize(460, 320);
}

QString ReportDialog::shownText() const {
  return view_->toPlainText();
}

void ReportDialog::Save() {
  QString path = QFileDialog::getSaveFileName(this, tr("Save Report"), QString(),
                                              tr("Text Files (*.txt);;All Files (*.*)"));
  if (path.isEmpty()) return;
  std::string stored = text_;
  stored.erase(std::remove(stored.begin(), stored.end(), '\r'), stored.end());
  if (!SaveReportText(Utf8ToCp1252(stored), path.toStdString()))
    QMessageBox::warning(this, tr("Error"), tr("ERROR: Unable to open file for writing."));
}

}  // namespace qv::app
