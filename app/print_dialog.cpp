#include "app/print_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace qv::app {

PrintDialog::PrintDialog(const std::string& command, QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("Print Records"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->addWidget(new QLabel(tr("Print which Records:"), this));
  current_ = new QRadioButton(tr("Current Record"), this);
  view_ = new QRadioButton(tr("All Records in the View"), this);
  view_->setChecked(true);
  layout->addWidget(current_);
  layout->addWidget(view_);
  layout->addSpacing(8);
  auto* label =
      new QLabel(tr("Print command (the text file is added as its last argument):"), this);
  command_ = new QLineEdit(QString::fromStdString(command), this);
  command_->setObjectName("printCommand");
  command_->setMinimumWidth(320);
  label->setBuddy(command_);
  layout->addWidget(label);
  layout->addWidget(command_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("Print"));
  layout->addSpacing(8);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

bool PrintDialog::allRecords() const {
  return view_->isChecked();
}

std::string PrintDialog::command() const {
  return command_->text().trimmed().toStdString();
}

}  // namespace qv::app
