#include "app/preferences_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>
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
  AddBeaming(layout);
  layout->addSpacing(8);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void PreferencesDialog::AddBeaming(QVBoxLayout* layout) {
  auto* group = new QGroupBox(tr("Beaming"), this);
  auto* form = new QFormLayout(group);
  beam_peer_ = new QLineEdit(group);
  beam_peer_->setObjectName("beamPeer");
  beam_peer_->setPlaceholderText("127.0.0.1");
  beam_peer_->setToolTip(tr("The computer Beam Records and Beam Database send to: a name or an "
                            "address, with :port when it listens on another port."));
  beam_port_ = new QSpinBox(group);
  beam_port_->setObjectName("beamPort");
  beam_port_->setRange(1, 65535);
  beam_port_->setToolTip(tr("The port this program listens on and beams to. 650 is the OBEX "
                            "port; ports below 1024 need privileges on Linux."));
  allow_network_ = new QCheckBox(tr("Let other &computers beam to this one"), group);
  allow_network_->setObjectName("allowNetwork");
  form->addRow(tr("Beam &to:"), beam_peer_);
  form->addRow(tr("&Port:"), beam_port_);
  form->addRow(allow_network_);
  layout->addWidget(group);
  setBeaming(BeamPreferences());
}

void PreferencesDialog::setBeaming(const BeamPreferences& beaming) {
  beaming_ = beaming;
  beam_peer_->setText(QString::fromStdString(beaming.peer));
  beam_port_->setValue(beaming.port);
  allow_network_->setChecked(beaming.allow_network());
}

BeamPreferences PreferencesDialog::beaming() const {
  BeamPreferences p = beaming_;
  QString peer = beam_peer_->text().trimmed();
  p.peer = peer.isEmpty() ? "127.0.0.1" : peer.toStdString();
  p.port = beam_port_->value();
  // A box left as it was keeps the address it stood for.
  if (allow_network_->isChecked() != beaming_.allow_network())
    p.bind = allow_network_->isChecked() ? "0.0.0.0" : "127.0.0.1";
  return p;
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
