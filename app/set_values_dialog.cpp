#include "app/set_values_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTimeEdit>
#include <QVBoxLayout>

#include "app/field_choices.h"
#include "app/stored_text_guard.h"
#include "engine/field_types.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"

namespace qv::app {

bool SetValuesDialog::Settable(unsigned type) {
  return HoldsTypedValue(type);
}

SetValuesDialog::SetValuesDialog(const Database& db, int slot, const FormatOptions& options,
                                 Prompter& prompter, QWidget* parent)
    : QDialog(parent), db_(db), slot_(slot), options_(options), prompter_(prompter) {
  const QString name = FieldName(db.definition(), slot);
  setWindowTitle(tr("Set Value of: %1").arg(name));
  const unsigned type = db.definition().field_type(slot);
  auto* form = new QFormLayout;
  const QString label = tr("&New value:");
  if (type == kPopUp) {
    popup_ = new QComboBox(this);
    for (const std::string& item : db.schema.fields[static_cast<std::size_t>(slot)].texts)
      if (!item.empty()) popup_->addItem(QString::fromStdString(Cp1252ToUtf8(item)));
    form->addRow(label, popup_);
  } else if (type == kCheckBox) {
    check_ = new QCheckBox(tr("&Checked"), this);
    form->addRow(QString(), check_);
  } else if (type == kDate) {
    date_ = new QDateEdit(QDate::currentDate(), this);
    date_->setCalendarPopup(true);
    date_->setDisplayFormat(QString::fromStdString(options.locale.short_date));
    empty_ = new QCheckBox(tr("No &Date"), this);
    form->addRow(label, date_);
    form->addRow(QString(), empty_);
    connect(empty_, &QCheckBox::toggled, date_, &QWidget::setDisabled);
  } else if (type == kTime) {
    time_ = new QTimeEdit(QTime(QTime::currentTime().hour(), QTime::currentTime().minute()), this);
    time_->setDisplayFormat("HH:mm");
    empty_ = new QCheckBox(tr("No &Time"), this);
    form->addRow(label, time_);
    form->addRow(QString(), empty_);
    connect(empty_, &QCheckBox::toggled, time_, &QWidget::setDisabled);
  } else {
    text_ = new QLineEdit(this);
    text_->setMinimumWidth(260);
    form->addRow(label, text_);
  }
  auto* note = new QLabel(
      tr("Every record in the list (%1) takes this value.").arg(db.visible.size()), this);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &SetValuesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(note);
  layout->addWidget(buttons);
  GuardStoredTexts(this);
}

std::optional<Bytes> SetValuesDialog::Read() const {
  if (check_) return CheckValue(check_->isChecked());
  if (date_) {
    if (empty_->isChecked()) return UInt32Value(0);
    QDate d = date_->date();
    return UInt32Value(DmyToDateNumber(Dmy{d.day(), d.month(), d.year()}));
  }
  if (time_) {
    if (empty_->isChecked()) return TimeValue(255, 0, 0);
    return TimeValue(time_->time().hour(), time_->time().minute(), 0);
  }
  const QString typed = popup_ ? popup_->currentText() : text_->text();
  return ParseValue(db_.definition().field(slot_),
                    db_.schema.fields[static_cast<std::size_t>(slot_)],
                    Utf8ToCp1252(typed.toStdString()), options_);
}

void SetValuesDialog::accept() {
  value_ = Read();
  if (!value_) {
    prompter_.message("The value is not valid for this field.", "Error", Icon::Exclamation);
    return;
  }
  QDialog::accept();
}

}  // namespace qv::app
