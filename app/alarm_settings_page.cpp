#include "app/alarm_settings_page.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "app/note_label.h"
#include "engine/text.h"

namespace qv::app {

namespace {

// Fills `box` with the used fields of `type` (every type for kNotUsed), "(none)" first when
// `none` is set, keeping `slot` chosen.
void FillChoices(QComboBox* box, const Database& db, unsigned type, bool none, int slot) {
  box->clear();
  if (none) box->addItem(QObject::tr("(none)"), -1);
  for (int s : UsedFieldsInDisplayOrder(db.definition())) {
    unsigned t = db.definition().field_type(s);
    if ((type != kNotUsed && t != type) || (type == kNotUsed && t == kHeading)) continue;
    box->addItem(QString::fromStdString(Cp1252ToUtf8(db.definition().field(s).name())), s);
  }
  box->setCurrentIndex(std::max(0, box->findData(slot)));
}

int ChosenSlot(const QComboBox* box) {
  return box->currentIndex() < 0 ? -1 : box->currentData().toInt();
}

}  // namespace

AlarmSettingsPage::AlarmSettingsPage(const Database& copy, QWidget* parent)
    : QWidget(parent), copy_(copy) {
  AlarmSettings s = ReadAlarmSettings(copy.definition());
  // A database that never had alarms suggests its first two fields for the reminder.
  if (!s.allowed && s.reminder_fields[0] < 0 && s.reminder_fields[1] < 0) {
    int k = 0;
    for (int slot : UsedFieldsInDisplayOrder(copy.definition()))
      if (k < 2 && copy.definition().field_type(slot) != kHeading) s.reminder_fields[k++] = slot;
  }
  allow_ = new QCheckBox(tr("&Allow Alarms to be set in this Database"), this);
  allow_->setChecked(s.allowed);
  body_ = new QWidget(this);

  auto* kind = new QGroupBox("Alarms Are", body_);
  manual_ = new QRadioButton(tr("Ma&nual"), kind);
  automatic_ = new QRadioButton(tr("Au&tomatic"), kind);
  auto* kinds = new QButtonGroup(this);
  kinds->addButton(manual_);
  kinds->addButton(automatic_);
  (s.automatic ? automatic_ : manual_)->setChecked(true);
  date_ = new QComboBox(kind);
  time_ = new QComboBox(kind);
  auto* kind_form = new QFormLayout;
  kind_form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  auto* date_label = new QLabel(tr("&Date field:"), kind);
  date_label->setBuddy(date_);
  auto* time_label = new QLabel(tr("T&ime field:"), kind);
  time_label->setBuddy(time_);
  kind_form->addRow(date_label, date_);
  kind_form->addRow(time_label, time_);
  auto* kind_layout = new QVBoxLayout(kind);
  kind_layout->addWidget(manual_);
  kind_layout->addWidget(Note(tr("Set an alarm on a record in the record editor."), kind));
  kind_layout->addWidget(automatic_);
  auto* indented = new QHBoxLayout;
  indented->addSpacing(24);
  indented->addLayout(kind_form, 1);
  kind_layout->addLayout(indented);
  kind_layout->addWidget(
      Note(tr("Each record's alarm is set from its date and time when it is stored; a record "
              "without a date has none."),
           kind));

  auto* shown = new QGroupBox("Show Which Two Fields in Reminder", body_);
  auto* shown_form = new QFormLayout(shown);
  shown_form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  for (int i = 0; i < 2; ++i) {
    reminder_[i] = new QComboBox(shown);
    auto* label = new QLabel(i == 0 ? tr("Fi&rst field:") : tr("Se&cond field:"), shown);
    label->setBuddy(reminder_[i]);
    shown_form->addRow(label, reminder_[i]);
  }

  snooze_ = new QSpinBox(body_);
  snooze_->setRange(1, kLargestSnooze);
  snooze_->setValue(s.snooze_amount);
  unit_ = new QComboBox(body_);
  unit_->addItems({tr("Minutes"), tr("Hours"), tr("Days")});
  unit_->setCurrentIndex(static_cast<int>(s.snooze_unit));
  auto* snooze_row = new QHBoxLayout;
  auto* snooze_label = new QLabel("Sn&ooze Time: ", body_);
  snooze_label->setBuddy(snooze_);
  snooze_row->addWidget(snooze_label);
  snooze_row->addWidget(snooze_);
  snooze_row->addWidget(unit_);
  snooze_row->addStretch(1);

  auto* body_layout = new QVBoxLayout(body_);
  body_layout->setContentsMargins(0, 0, 0, 0);
  body_layout->addWidget(kind);
  body_layout->addWidget(shown);
  body_layout->addLayout(snooze_row);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(allow_);
  layout->addWidget(body_);
  layout->addStretch(1);

  FillChoices(date_, copy_, kDate, false, s.date_field);
  FillChoices(time_, copy_, kTime, true, s.time_field);
  for (int i = 0; i < 2; ++i)
    FillChoices(reminder_[i], copy_, kNotUsed, true, s.reminder_fields[i]);
  connect(allow_, &QCheckBox::toggled, this, &AlarmSettingsPage::UpdateEnabled);
  connect(automatic_, &QRadioButton::toggled, this, &AlarmSettingsPage::UpdateEnabled);
  setTabOrder(allow_, manual_);
  setTabOrder(manual_, automatic_);
  setTabOrder(automatic_, date_);
  setTabOrder(date_, time_);
  setTabOrder(time_, reminder_[0]);
  setTabOrder(reminder_[0], reminder_[1]);
  setTabOrder(reminder_[1], snooze_);
  setTabOrder(snooze_, unit_);
  UpdateEnabled();
}

void AlarmSettingsPage::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // The Fields page may have added, renamed or deleted fields since.
  FillFieldChoices();
}

void AlarmSettingsPage::FillFieldChoices() {
  FillChoices(date_, copy_, kDate, false, ChosenSlot(date_));
  FillChoices(time_, copy_, kTime, true, ChosenSlot(time_));
  for (QComboBox* box : reminder_) FillChoices(box, copy_, kNotUsed, true, ChosenSlot(box));
  UpdateEnabled();
}

void AlarmSettingsPage::UpdateEnabled() {
  body_->setEnabled(allow_->isChecked());
  const bool dates = date_->count() > 0;
  automatic_->setEnabled(dates || automatic_->isChecked());
  automatic_->setToolTip(dates ? QString() : tr("Automatic alarms need a Date field"));
  date_->setEnabled(automatic_->isChecked());
  time_->setEnabled(automatic_->isChecked());
}

AlarmSettings AlarmSettingsPage::Chosen() const {
  AlarmSettings s = ReadAlarmSettings(copy_.definition());
  s.allowed = allow_->isChecked();
  s.automatic = automatic_->isChecked();
  s.date_field = ChosenSlot(date_);
  s.time_field = ChosenSlot(time_);
  for (int i = 0; i < 2; ++i) s.reminder_fields[i] = ChosenSlot(reminder_[i]);
  s.snooze_amount = snooze_->value();
  s.snooze_unit = static_cast<SnoozeUnit>(std::clamp(unit_->currentIndex(), 0, 2));
  return s;
}

QString AlarmSettingsPage::Problem() const {
  const AlarmSettings s = Chosen();
  if (s.allowed && s.automatic && s.date_field < 0)
    return tr("Automatic alarms are taken from a Date field: choose one, or make alarms manual.");
  return {};
}

void AlarmSettingsPage::Store(Database& copy) const {
  const AlarmSettings s = Chosen();
  // An untouched page leaves the stored bytes alone.
  if (s == ReadAlarmSettings(copy.definition())) return;
  ChangeAlarmSettings(copy, s);
}

}  // namespace qv::app
