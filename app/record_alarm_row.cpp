#include "app/record_alarm_row.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLabel>

#include "exchange/alarm_settings.h"
#include "exchange/alarms.h"

namespace qv::app {

namespace {

// Alarm times are local wall-clock seconds: shown as they stand, without a time zone.
QDateTime Shown(std::int64_t time) {
  return QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC).addSecs(time);
}

std::int64_t Stored(const QDateTime& shown) {
  return QDateTime(shown.date(), QTime(shown.time().hour(), shown.time().minute()), Qt::UTC)
      .toSecsSinceEpoch();
}

}  // namespace

RecordAlarmRow::RecordAlarmRow(Workspace& workspace, Database& db, bool view_only, QWidget* parent)
    : QWidget(parent),
      workspace_(workspace),
      db_(db),
      automatic_(ReadAlarmSettings(db.definition()).automatic) {
  set_ = new QCheckBox(tr("Set &Alarm for this Record"), this);
  auto* label = new QLabel("Alarm Set For:", this);
  when_ = new QDateTimeEdit(this);
  when_->setTimeSpec(Qt::UTC);
  when_->setCalendarPopup(true);
  when_->setDisplayFormat("yyyy-MM-dd HH:mm");
  label->setBuddy(when_);
  note_ = new QLabel(tr("(from the record's date and time)"), this);
  note_->setEnabled(false);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(set_);
  row->addSpacing(12);
  row->addWidget(label);
  row->addWidget(when_);
  row->addWidget(note_);
  row->addStretch(1);
  note_->setVisible(automatic_);
  set_->setEnabled(!automatic_ && !view_only);
  when_->setReadOnly(automatic_ || view_only);
  connect(set_, &QCheckBox::toggled, this, [this](bool on) {
    when_->setEnabled(on);
    emit edited();
  });
  connect(when_, &QDateTimeEdit::dateTimeChanged, this, [this] { emit edited(); });
}

void RecordAlarmRow::Load(std::span<const std::uint8_t> prefix) {
  loaded_.reset();
  if (auto identity = IdentityInHeader(prefix))
    if (auto entry = FindAlarmEntry(workspace_.settings, *identity)) loaded_ = entry->time;
  QSignalBlocker block_set(set_);
  QSignalBlocker block_when(when_);
  Choose(loaded_);
}

void RecordAlarmRow::Choose(std::optional<std::int64_t> time) {
  set_->setChecked(time.has_value());
  when_->setEnabled(time.has_value());
  // A new alarm starts an hour from now, on the minute.
  const std::int64_t now = workspace_.clock.LocalNow();
  when_->setDateTime(Shown(time.value_or((now / 60 + 60) * 60)));
}

std::optional<std::int64_t> RecordAlarmRow::Chosen() const {
  if (!set_->isChecked()) return std::nullopt;
  return Stored(when_->dateTime());
}

void RecordAlarmRow::Store(std::uint32_t number) {
  Settings& settings = workspace_.settings;
  const std::int64_t now = workspace_.clock.LocalNow();
  if (automatic_) {
    ApplyAutomaticAlarm(settings, db_, number, now);
  } else if (auto chosen = Chosen()) {
    if (chosen != loaded_ || RecordAlarmItem(db_, number) == 0)
      SetRecordAlarm(settings, db_, number, *chosen);
  } else if (auto identity = RecordIdentityOf(db_, number)) {
    if (auto entry = FindAlarmEntry(settings, *identity))
      ClearRecordAlarm(settings, *entry, &db_, number);
  }
  if (number < db_.count()) Load(db_.records[number].data);
}

}  // namespace qv::app
