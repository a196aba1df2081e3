#include "app/preferences_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace qv::app {

PreferencesDialog::PreferencesDialog(const Preferences& p, QWidget* parent) : QDialog(parent) {
  setWindowTitle("Preferences");
  const QString texts[5] = {tr("Auto save databases when closed"), tr("Auto show input panel as needed"),
                            tr("Allow Checkbox selection in List View"),
                            tr("Allow Popup selection in List View"),
                            tr("Allow Date/Time selection in List View")};
  const bool values[5] = {p.auto_save, p.auto_sip, p.allow_checks, p.allow_popups, p.allow_date_time};
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  for (int i = 0; i < 5; ++i) {
    boxes_[i] = new QCheckBox(texts[i], this);
    boxes_[i]->setChecked(values[i]);
    layout->addWidget(boxes_[i]);
  }
  // Kept from the handheld edition, where the timed auto-save was never switched on: hidden.
  auto* autoSaveLabel = new QLabel(tr("Auto Save Database Changes:"), this);
  auto* autoSaveList = new QComboBox(this);
  autoSaveList->addItems({tr("Never"), tr("After 1 minute"), tr("After 5 minutes"), tr("After 30 minutes"),
                          tr("After 1 Hour"), tr("After 5 Hours")});
  autoSaveLabel->hide();
  autoSaveList->hide();
  layout->addWidget(autoSaveLabel);
  layout->addWidget(autoSaveList);
  layout->addSpacing(8);
  auto* printLabel = new QLabel(tr("Print command:"), this);
  print_command_ = new QLineEdit(QString::fromStdString(p.print_command), this);
  print_command_->setPlaceholderText("lp");
  printLabel->setBuddy(print_command_);
  layout->addWidget(printLabel);
  layout->addWidget(print_command_);
  layout->addSpacing(8);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

Preferences PreferencesDialog::values(Preferences base) const {
  base.auto_save = boxes_[0]->isChecked();
  base.auto_sip = boxes_[1]->isChecked();
  base.allow_checks = boxes_[2]->isChecked();
  base.allow_popups = boxes_[3]->isChecked();
  base.allow_date_time = boxes_[4]->isChecked();
  base.print_command = print_command_->text().trimmed().toStdString();
  return base;
}

}  // namespace qv::app
