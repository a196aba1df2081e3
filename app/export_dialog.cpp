#include "app/export_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace qv::app {

namespace {

const char* const kSuffixes[] = {"csv", "json", "txt"};

}  // namespace

QComboBox* MakeSeparatorBox(char current, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->addItem(QObject::tr("Comma ( , )"), int(','));
  box->addItem(QObject::tr("Semicolon ( ; )"), int(';'));
  box->addItem(QObject::tr("Tab"), int('\t'));
  box->addItem(QObject::tr("Vertical bar ( | )"), int('|'));
  int at = box->findData(int(current));
  if (at < 0) {
    box->addItem(QString("'%1'").arg(QChar(current)), int(current));
    at = box->count() - 1;
  }
  box->setCurrentIndex(at);
  return box;
}

char ChosenSeparator(const QComboBox* box) {
  return static_cast<char>(box->currentData().toInt());
}

QComboBox* MakeEncodingBox(QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->addItem(QObject::tr("UTF-8"), int(TextEncoding::Utf8));
  box->addItem(QObject::tr("Windows-1252 (as stored)"), int(TextEncoding::Cp1252));
  return box;
}

TextEncoding ChosenEncoding(const QComboBox* box) {
  return static_cast<TextEncoding>(box->currentData().toInt());
}

ExportDialog::ExportDialog(const Preferences& preferences, const std::string& proposed,
                           QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(tr("Export Records"));
  auto* format_box = new QGroupBox(tr("Format"), this);
  formats_[ExportRequest::Csv] = new QRadioButton(tr("&Comma-separated values (.csv)"), format_box);
  formats_[ExportRequest::Json] = new QRadioButton(tr("&JSON for scripts (.json)"), format_box);
  formats_[ExportRequest::Text] = new QRadioButton(tr("Plain &text (.txt)"), format_box);
  formats_[ExportRequest::Csv]->setChecked(true);
  auto* format_layout = new QVBoxLayout(format_box);
  for (QRadioButton* b : formats_) {
    format_layout->addWidget(b);
    connect(b, &QRadioButton::toggled, this, &ExportDialog::FormatChanged);
  }

  csv_box_ = new QGroupBox(tr("Options"), this);
  header_ = new QCheckBox(tr("First line holds the field &names"), csv_box_);
  header_->setChecked(true);
  quote_all_ = new QCheckBox(tr("&Quote every value"), csv_box_);
  quote_all_->setChecked(preferences.csv_quote_all);
  filtered_ = new QCheckBox(tr("Only records that pass the &filter"), csv_box_);
  order_ = new QComboBox(csv_box_);
  order_->addItem(tr("Display order"));
  order_->addItem(tr("Field definition order"));
  separator_ = MakeSeparatorBox(preferences.csv_separator, csv_box_);
  encoding_ = MakeEncodingBox(csv_box_);
  text_scope_ = new QComboBox(csv_box_);
  text_scope_->addItem(tr("Records that pass the filter"));
  text_scope_->addItem(tr("The current record"));
  auto* options = new QFormLayout(csv_box_);
  options->addRow(header_);
  options->addRow(quote_all_);
  options->addRow(filtered_);
  options->addRow(tr("Column &order:"), order_);
  options->addRow(tr("&Separator:"), separator_);
  options->addRow(tr("&Encoding:"), encoding_);
  options->addRow(tr("&Records:"), text_scope_);

  path_ = new QLineEdit(QString::fromStdString(proposed), this);
  path_->setMinimumWidth(320);
  auto* browse = new QPushButton(tr("&Browse..."), this);
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, &ExportDialog::Browse);
  auto* file_row = new QHBoxLayout;
  file_row->addWidget(path_, 1);
  file_row->addWidget(browse);
  auto* file_form = new QFormLayout;
  auto* file_label = new QLabel(tr("&Write to:"), this);
  file_label->setBuddy(path_);
  file_form->addRow(file_label, file_row);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("E&xport"));
  connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(format_box);
  layout->addWidget(csv_box_);
  layout->addLayout(file_form);
  layout->addWidget(buttons);
  FormatChanged();
}

void ExportDialog::FormatChanged() {
  const bool csv = formats_[ExportRequest::Csv]->isChecked();
  const bool text = formats_[ExportRequest::Text]->isChecked();
  for (QWidget* w : std::initializer_list<QWidget*>{header_, quote_all_, order_, separator_})
    w->setEnabled(csv);
  filtered_->setEnabled(!text);
  encoding_->setEnabled(!formats_[ExportRequest::Json]->isChecked());  // JSON is always UTF-8
  text_scope_->setEnabled(text);
  // The file's suffix follows the format while it is still one of ours.
  QFileInfo info(path_->text());
  const int format = csv ? 0 : text ? 2 : 1;
  QString suffix = info.suffix().toLower();
  if (!path_->text().isEmpty() && (suffix == "csv" || suffix == "json" || suffix == "txt"))
    path_->setText(info.path() + "/" + info.completeBaseName() + "." + kSuffixes[format]);
}

void ExportDialog::Browse() {
  const bool csv = formats_[ExportRequest::Csv]->isChecked();
  const bool text = formats_[ExportRequest::Text]->isChecked();
  QString filter = csv    ? tr("CSV Files (*.csv);;All Files (*)")
                   : text ? tr("Text Files (*.txt);;All Files (*.*)")
                          : tr("JSON Files (*.json);;All Files (*)");
  QString path = QFileDialog::getSaveFileName(this, tr("Export Records"), path_->text(), filter);
  if (!path.isEmpty()) path_->setText(path);
}

ExportRequest ExportDialog::request() const {
  ExportRequest r;
  r.format = formats_[ExportRequest::Json]->isChecked()   ? ExportRequest::Json
             : formats_[ExportRequest::Text]->isChecked() ? ExportRequest::Text
                                                          : ExportRequest::Csv;
  r.csv.header = header_->isChecked();
  r.csv.quote_all_values = r.csv.quote_all_names = quote_all_->isChecked();
  r.csv.filtered_only = filtered_->isChecked();
  r.csv.slot_order = order_->currentIndex() == 1;
  r.csv.separator = ChosenSeparator(separator_);
  r.csv.encoding = ChosenEncoding(encoding_);
  r.text_all_filtered = text_scope_->currentIndex() == 0;
  r.path = path_->text().trimmed().toStdString();
  return r;
}

void ExportDialog::accept() {
  if (path_->text().trimmed().isEmpty()) {
    path_->setFocus();
    return;
  }
  QFileInfo info(path_->text().trimmed());
  if (info.exists() &&
      QMessageBox::question(
          this, tr("Export Records"),
          tr("%1 already exists.\nDo you want to replace it?").arg(info.fileName())) !=
          QMessageBox::Yes)
    return;
  QDialog::accept();
}

}  // namespace qv::app
