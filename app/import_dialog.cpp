#include "app/import_dialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/export_dialog.h"
#include "app/field_choices.h"
#include "engine/text.h"
#include "processing/csv_reader.h"

namespace qv::app {

namespace {

// Enough of the file for the preview rows, however long its lines.
constexpr qint64 kPreviewBytes = 256 * 1024;

QString CellText(const std::string& cell, TextEncoding encoding) {
  return QString::fromStdString(Cp1252ToUtf8(DecodeFromFile(cell, encoding)));
}

}  // namespace

ImportDialog::ImportDialog(const Database& db, const Preferences& preferences,
                           const std::string& path, QWidget* parent)
    : QDialog(parent), db_(db) {
  setWindowTitle(tr("Import CSV"));
  path_ = new QLineEdit(QString::fromStdString(path), this);
  path_->setMinimumWidth(360);
  auto* browse = new QPushButton(tr("&Browse..."), this);
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, &ImportDialog::Browse);
  auto* file_row = new QHBoxLayout;
  file_row->addWidget(path_, 1);
  file_row->addWidget(browse);
  separator_ = MakeSeparatorBox(preferences.csv_separator, this);
  encoding_ = MakeEncodingBox(this);
  header_ = new QComboBox(this);
  header_->addItem(tr("Use it as a header when it names fields"), int(CsvHeader::Auto));
  header_->addItem(tr("The first line names the fields"), int(CsvHeader::Present));
  header_->addItem(tr("No header: columns in display order"), int(CsvHeader::Absent));
  auto* form = new QFormLayout;
  auto* file_label = new QLabel(tr("&File:"), this);
  file_label->setBuddy(path_);
  form->addRow(file_label, file_row);
  form->addRow(tr("&Separator:"), separator_);
  form->addRow(tr("&Encoding:"), encoding_);
  form->addRow(tr("First &line:"), header_);

  preview_ = new QTableWidget(this);
  preview_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  preview_->setSelectionMode(QAbstractItemView::NoSelection);
  preview_->verticalHeader()->setVisible(true);
  preview_->setWordWrap(false);
  preview_->setMinimumHeight(200);
  preview_->verticalHeader()->setDefaultSectionSize(preview_->fontMetrics().height() + 8);
  mapping_ = new QLabel(this);
  mapping_->setWordWrap(true);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  import_ = buttons->button(QDialogButtonBox::Ok);
  import_->setText(tr("&Import"));
  connect(buttons, &QDialogButtonBox::accepted, this, &ImportDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  auto* preview_label =
      new QLabel(tr("&Preview (first rows, under the fields they go into):"), this);
  preview_label->setBuddy(preview_);
  layout->addWidget(preview_label);
  layout->addWidget(preview_, 1);
  layout->addWidget(mapping_);
  layout->addWidget(buttons);

  connect(path_, &QLineEdit::editingFinished, this, &ImportDialog::UpdatePreview);
  for (QComboBox* box : {separator_, encoding_, header_})
    connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ImportDialog::UpdatePreview);
  resize(640, 440);
  UpdatePreview();
}

void ImportDialog::Browse() {
  QString path = QFileDialog::getOpenFileName(this, tr("Import CSV"), path_->text(),
                                              tr("CSV Files (*.csv *.txt);;All Files (*)"));
  if (path.isEmpty()) return;
  path_->setText(path);
  UpdatePreview();
}

void ImportDialog::UpdatePreview() {
  preview_->clear();
  preview_->setRowCount(0);
  preview_->setColumnCount(0);
  mapped_ = false;
  if (import_) import_->setEnabled(false);
  const QString path = path_->text().trimmed();
  if (path.isEmpty()) {
    mapping_->setText(tr("Choose the file to import."));
    return;
  }
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    mapping_->setText(tr("The file %1 cannot be read.").arg(QFileInfo(path).fileName()));
    return;
  }
  const QByteArray head = file.read(kPreviewBytes);
  const ImportRequest r = request();
  CsvReader reader(std::string_view(head.constData(), static_cast<std::size_t>(head.size())),
                   r.options.separator);
  std::vector<CsvRow> rows;
  CsvRow row;
  while (rows.size() < static_cast<std::size_t>(kPreviewRows) + 1 && reader.Next(row))
    rows.push_back(row);
  ColumnMap map;
  std::string error;
  if (!MapColumns(db_, rows.empty() ? nullptr : &rows.front(), r.options.header, r.options.encoding,
                  map, error)) {
    mapping_->setText(QString::fromStdString(Cp1252ToUtf8(error)));
    return;
  }
  mapped_ = true;
  if (import_) import_->setEnabled(true);
  const int columns = static_cast<int>(map.fields.size());
  preview_->setColumnCount(columns);
  QStringList headers;
  for (int slot : map.fields)
    headers << (slot >= 0 ? FieldName(db_.definition(), slot) : tr("(not imported)"));
  preview_->setHorizontalHeaderLabels(headers);
  const std::size_t first = map.header ? 1 : 0;
  for (std::size_t i = first; i < rows.size() && preview_->rowCount() < kPreviewRows; ++i) {
    const int at = preview_->rowCount();
    preview_->insertRow(at);
    preview_->setVerticalHeaderItem(at, new QTableWidgetItem(QString::number(rows[i].line)));
    for (int c = 0; c < columns && c < static_cast<int>(rows[i].cells.size()); ++c)
      preview_->setItem(at, c,
                        new QTableWidgetItem(CellText(rows[i].cells[c], r.options.encoding)));
  }
  preview_->resizeColumnsToContents();
  mapping_->setText(map.header ? tr("The first line names the fields; it is not imported.")
                               : tr("There is no header line; every line is imported."));
}

ImportRequest ImportDialog::request() const {
  ImportRequest r;
  r.path = path_->text().trimmed().toStdString();
  r.options.separator = ChosenSeparator(separator_);
  r.options.encoding = ChosenEncoding(encoding_);
  r.options.header = static_cast<CsvHeader>(header_->currentData().toInt());
  return r;
}

void ImportDialog::accept() {
  UpdatePreview();
  if (!mapped_) return;  // the message under the preview says why
  QDialog::accept();
}

}  // namespace qv::app
