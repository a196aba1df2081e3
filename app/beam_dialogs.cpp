#include "app/beam_dialogs.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace qv::app {

namespace {

QDialogButtonBox* CancelOnly(QDialog* dialog) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, dialog);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  return buttons;
}

}  // namespace

BeamRecordsDialog::BeamRecordsDialog(bool has_current, int view_count, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(tr("Beam Records"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->addWidget(new QLabel(tr("Beam which Records:"), this));
  current_ = new QRadioButton(tr("&Current Record"), this);
  view_ = new QRadioButton(tr("&All Records in the View (%n)", nullptr, view_count), this);
  current_->setEnabled(has_current);
  view_->setEnabled(view_count > 0);
  (view_count > 0 ? view_ : current_)->setChecked(true);
  layout->addWidget(current_);
  layout->addWidget(view_);
  layout->addSpacing(8);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText(tr("&Beam"));
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

bool BeamRecordsDialog::allRecords() const {
  return view_->isChecked();
}

BeamProgressDialog::BeamProgressDialog(const QString& peer, QWidget* parent) : QDialog(parent) {
  setWindowTitle("Beam Data");
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 16, 20, 12);
  text_ = new QLabel("Looking for Sending Device....", this);
  hint_ = new QLabel("(Align Infrared Ports)", this);
  auto* where = new QLabel(tr("Beaming to %1").arg(peer), this);
  where->setEnabled(false);  // greyed: a detail, not an instruction
  layout->addWidget(text_);
  layout->addWidget(hint_);
  layout->addWidget(where);
  layout->addSpacing(8);
  layout->addWidget(CancelOnly(this));
  setMinimumWidth(320);
}

void BeamProgressDialog::showProgress(const QString& text) {
  if (text == "Sending Data...") {
    setWindowTitle("Sending Data");
    hint_->hide();
  }
  if (text != "(Align Infrared Ports)") text_->setText(text);
}

void BeamProgressDialog::reject() {
  // The send thread ends on its own once it sees the cancel; it closes the dialog then.
  emit cancelRequested();
  text_->setText(tr("Cancelling..."));
}

ReceiveDialog::ReceiveDialog(const QString& where, QWidget* parent) : QDialog(parent) {
  setWindowTitle("Receive via Infrared");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 16, 20, 12);
  text_ = new QLabel(
      "Line up the IR Port of a Pocket PC or Palm OS handheld with this one, and select Beam "
      "Record, Beam Records, or Beam Database from that handheld.",
      this);
  text_->setWordWrap(true);
  status_ = new QLabel("Looking for sending device...    (Align infrared ports)", this);
  status_->setObjectName("receiveStatus");
  auto* listening = new QLabel(tr("Listening on %1").arg(where), this);
  listening->setEnabled(false);
  layout->addWidget(text_);
  layout->addSpacing(6);
  layout->addWidget(status_);
  layout->addWidget(listening);
  layout->addSpacing(8);
  layout->addWidget(CancelOnly(this));
  setMinimumWidth(420);
}

void ReceiveDialog::setStatus(const QString& text) {
  status_->setText(text);
  if (text == "Receiving...") {
    setWindowTitle("Receiving");
    text_->setText("Receiving data from handheld...");
  }
}

QString ReceiveDialog::status() const {
  return status_->text();
}

}  // namespace qv::app
