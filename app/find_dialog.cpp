#include "app/find_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/field_choices.h"
#include "engine/text.h"

namespace qv::app {

namespace {
// The search text keeps 34 characters and its terminator.
constexpr int kSearchLength = 34;
}  // namespace

FindDialog::FindDialog(const DatabaseDefinition& definition, const FindSettings& current,
                       QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(tr("Search Database"));
  text_ = new QLineEdit(QString::fromStdString(Cp1252ToUtf8(current.text)), this);
  text_->setMaxLength(kSearchLength);
  text_->setMinimumWidth(260);
  text_->selectAll();
  field_ = new QComboBox(this);
  field_->addItem(tr("Search All Fields"));
  AddFieldItems(field_, definition);
  SelectSlot(field_, current.field);
  case_ = new QCheckBox(tr("&Case Sensitive"), this);
  case_->setChecked(current.case_sensitive);
  begins_ = new QCheckBox(tr("Field &Begins with..."), this);
  begins_->setChecked(current.begins_with);

  auto* form = new QFormLayout;
  form->addRow(tr("&Search For:"), text_);
  form->addRow(tr("Select &Field"), field_);
  form->addRow(QString(), case_);
  form->addRow(QString(), begins_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("&Find"));
  auto enable = [this, buttons] {
    buttons->button(QDialogButtonBox::Ok)->setEnabled(!text_->text().isEmpty());
  };
  connect(text_, &QLineEdit::textChanged, this, enable);
  enable();
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
}

FindSettings FindDialog::settings() const {
  FindSettings s;
  s.text = Utf8ToCp1252(text_->text().toStdString()).substr(0, kSearchLength);
  s.field = ChosenSlot(field_);
  s.case_sensitive = case_->isChecked();
  s.begins_with = begins_->isChecked();
  return s;
}

}  // namespace qv::app
