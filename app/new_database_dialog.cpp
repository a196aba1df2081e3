#include "app/new_database_dialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <memory>
#include <set>

#include "engine/text.h"

namespace qv::app {

namespace {

// The types a field can be given here; the others need settings only the full field editor has.
constexpr FieldType kOfferedTypes[] = {kText,   kInteger, kFloat, kPopUp, kCheckBox,
                                       kUnique, kDate,    kTime,  kNote};
constexpr int kNameBytes = 19;      // a field name holds 19 characters and its terminator
constexpr int kDatabaseBytes = 31;  // the header's name holds 31 and its terminator

QComboBox* TypeBox(unsigned type, QWidget* parent) {
  auto* box = new QComboBox(parent);
  for (FieldType t : kOfferedTypes) {
    box->addItem(
        QString::fromUtf8(FieldTypeName(t).data(), static_cast<qsizetype>(FieldTypeName(t).size())),
        static_cast<int>(t));
    if (t == type) box->setCurrentIndex(box->count() - 1);
  }
  return box;
}

}  // namespace

NewDatabaseDialog::NewDatabaseDialog(QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("New Database"));
  name_ = new QLineEdit("Untitled", this);
  name_->setMaxLength(kDatabaseBytes);
  fields_ = new QTableWidget(0, 2, this);
  fields_->setHorizontalHeaderLabels({tr("Field Name"), tr("Type")});
  fields_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  // The type column is as wide as its drop-downs; resizing to contents would not see them.
  {
    std::unique_ptr<QComboBox> probe(TypeBox(kText, nullptr));
    int widest = probe->sizeHint().width();
    for (int i = 0; i < probe->count(); ++i)
      widest = std::max(widest, probe->fontMetrics().horizontalAdvance(probe->itemText(i)) + 48);
    fields_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Fixed);
    fields_->horizontalHeader()->resizeSection(1, widest + 8);
  }
  fields_->verticalHeader()->setVisible(false);
  fields_->setSelectionBehavior(QAbstractItemView::SelectRows);
  auto* add = new QPushButton(tr("Add Field"), this);
  auto* remove = new QPushButton(tr("Remove Field"), this);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);

  auto* form = new QFormLayout;
  form->addRow(tr("Database Name:"), name_);
  auto* rowButtons = new QHBoxLayout;
  rowButtons->addWidget(add);
  rowButtons->addWidget(remove);
  rowButtons->addStretch(1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(fields_, 1);
  layout->addLayout(rowButtons);
  layout->addWidget(buttons);
  resize(420, 380);

  connect(add, &QPushButton::clicked, this, [this] {
    AddField(QString("Field %1").arg(fields_->rowCount() + 1), kText);
    fields_->editItem(fields_->item(fields_->rowCount() - 1, 0));
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    int row = fields_->currentRow();
    if (row >= 0) fields_->removeRow(row);
  });
  connect(buttons, &QDialogButtonBox::accepted, this, &NewDatabaseDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void NewDatabaseDialog::AddField(const QString& name, unsigned type) {
  if (fields_->rowCount() >= kFieldSlots) return;
  int row = fields_->rowCount();
  fields_->insertRow(row);
  fields_->setItem(row, 0, new QTableWidgetItem(name));
  fields_->setCellWidget(row, 1, TypeBox(type, fields_));
}

void NewDatabaseDialog::SetDatabaseName(const QString& name) {
  name_->setText(name);
}

bool NewDatabaseDialog::Apply(Database& db, QString& problem) const {
  std::string name = Utf8ToCp1252(name_->text().trimmed().toStdString());
  if (name.empty() || name.size() > kDatabaseBytes) {
    problem = tr("The database name must be 1 to 31 characters.");
    return false;
  }
  if (fields_->rowCount() == 0) {
    problem = tr("Add at least one field.");
    return false;
  }
  std::set<std::string> seen;
  for (int row = 0; row < fields_->rowCount(); ++row) {
    QTableWidgetItem* item = fields_->item(row, 0);
    std::string field = Utf8ToCp1252(item ? item->text().trimmed().toStdString() : std::string());
    if (field.empty() || field.size() > kNameBytes) {
      problem = tr("Field names must be 1 to 19 characters.");
      return false;
    }
    if (!seen.insert(ToLowerAscii(field)).second) {
      problem = tr("Two fields have the same name.");
      return false;
    }
  }
  db.name = name;
  db.header.SetName(name);
  for (int row = 0; row < fields_->rowCount(); ++row) {
    auto* box = static_cast<QComboBox*>(fields_->cellWidget(row, 1));
    FieldDefinition f = db.definition().field(row);
    f.set_type(static_cast<unsigned>(box->currentData().toInt()));
    f.set_name(Utf8ToCp1252(fields_->item(row, 0)->text().trimmed().toStdString()));
  }
  return true;
}

void NewDatabaseDialog::accept() {
  if (target_) {
    QString problem;
    if (!Apply(*target_, problem)) {
      QMessageBox::warning(this, windowTitle(), problem);
      return;
    }
  }
  QDialog::accept();
}

}  // namespace qv::app
