#include "app/report_dialog.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
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
  auto* view = new QPlainTextEdit(this);
  view->setReadOnly(true);
  QFont courier("Courier");
  courier.setStyleHint(QFont::TypeWriter);
  view->setFont(courier);
  view->setTabStopDistance(QFontMetricsF(courier).horizontalAdvance(' ') * 8);
  view->setPlainText(QString::fromStdString(text).remove('\r'));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  QPushButton* save = buttons->addButton(tr("Save..."), QDialogButtonBox::ActionRole);
  connect(save, &QPushButton::clicked, this, &ReportDialog::Save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(view);
  layout->addWidget(buttons);
  resize(420, 300);
}

void ReportDialog::Save() {
  QString path = QFileDialog::getSaveFileName(this, tr("Save Report"), QString(),
                                              tr("Text Files (*.txt);;All Files (*)"));
  if (path.isEmpty()) return;
  std::string stored = text_;
  stored.erase(std::remove(stored.begin(), stored.end(), '\r'), stored.end());
  if (!SaveReportText(Utf8ToCp1252(stored), path.toStdString()))
    QMessageBox::warning(this, tr("Error"), tr("ERROR: Unable to open file for writing."));
}

}  // namespace qv::app
