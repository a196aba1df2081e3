#include "app/record_editor_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/external_calls.h"
#include "app/field_controls.h"
#include "app/linked_navigation.h"
#include "app/popup_list_editor.h"
#include "app/record_alarm_row.h"
#include "app/stored_text_guard.h"
#include "engine/record.h"
#include "engine/text.h"
#include "exchange/alarm_settings.h"
#include "processing/filter.h"
#include "processing/formula.h"
#include "processing/store.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv::app {

namespace {

QString Wide(std::string_view cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}

bool HasFlag(const Bytes& prefix, std::uint8_t flag) {
  auto header = ReadRecordHeader(prefix);
  return header && header->has(flag);
}

}  // namespace

RecordEditorDialog::RecordEditorDialog(Workspace& workspace, Database& db, AccessGate& access,
                                       std::uint32_t number, bool view_only, QWidget* parent)
    : QDialog(parent),
      workspace_(workspace),
      db_(db),
      access_(access),
      view_only_(view_only),
      number_(number) {
  BuildControls();
  encrypt_ = new QCheckBox(tr("&Encrypt"), this);
  encrypt_->setToolTip(tr("Encipher this record's marked fields when it is stored"));
  // The box is for manual encryption only; the other modes decide for every record.
  encrypt_->setVisible(GetEncryptionMode(db_.definition()) == kManualEncryption &&
                       AnyFieldMarked(db_.definition()));
  connect(encrypt_, &QCheckBox::toggled, this, [this] { dirty_ = true; });
  position_ = new QLabel(this);
  previous_ = new QPushButton(tr("&Previous"), this);
  next_ = new QPushButton(tr("&Next"), this);
  new_ = new QPushButton(tr("Ne&w"), this);
  duplicate_ = new QPushButton(tr("D&uplicate"), this);
  delete_ = new QPushButton(tr("&Delete"), this);
  previous_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp));
  next_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown));
  previous_->setToolTip(tr("Previous record that passes the filter (Ctrl+Page Up)"));
  next_->setToolTip(tr("Next record that passes the filter (Ctrl+Page Down)"));
  auto* row = new QHBoxLayout;
  for (QPushButton* b : {previous_, next_, new_, duplicate_, delete_}) {
    b->setAutoDefault(false);
    row->addWidget(b);
  }
  row->addStretch(1);
  row->addWidget(encrypt_);
  row->addWidget(position_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(row);
  layout->addWidget(findChild<QScrollArea*>(), 1);
  if (ReadAlarmSettings(db_.definition()).allowed) {
    alarm_ = new RecordAlarmRow(workspace_, db_, view_only_, this);
    connect(alarm_, &RecordAlarmRow::edited, this, [this] { dirty_ = true; });
    layout->addWidget(alarm_);
  }
  layout->addWidget(buttons);
  connect(previous_, &QPushButton::clicked, this, &RecordEditorDialog::ShowPrevious);
  connect(next_, &QPushButton::clicked, this, &RecordEditorDialog::ShowNext);
  connect(new_, &QPushButton::clicked, this, &RecordEditorDialog::NewRecord);
  connect(duplicate_, &QPushButton::clicked, this, &RecordEditorDialog::DuplicateRecord);
  connect(delete_, &QPushButton::clicked, this, &RecordEditorDialog::DeleteRecord);
  connect(buttons, &QDialogButtonBox::accepted, this, &RecordEditorDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &RecordEditorDialog::reject);
  // As tall as the fields need, within a 768-pixel screen.
  auto* scroll = findChild<QScrollArea*>();
  int height = scroll->widget()->sizeHint().height() + row->sizeHint().height() +
               buttons->sizeHint().height() + 48;
  resize(two_columns_ ? 1040 : 620, std::clamp(height, 320, 700));
  GuardStoredTexts(this);
}

namespace {

// How much height a field's control takes, in rows.
int RowWeight(unsigned type) {
  return type == kImage ? 7 : type == kNote ? 3 : 1;
}

QFormLayout* NewForm() {
  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  return form;
}

}  // namespace

void RecordEditorDialog::BuildControls() {
  auto* body = new QWidget;
  auto* outer = new QVBoxLayout(body);
  auto* columns = new QHBoxLayout;
  outer->addLayout(columns);
  outer->addStretch(1);
  const auto shown = UsedFieldsInDisplayOrder(db_.definition());
  int total = 0;
  for (int slot : shown) total += RowWeight(db_.definition().field_type(slot));
  // Many fields are laid out in two columns, split where half the height is reached (a
  // heading stays with the fields after it), so a whole record fits on the screen.
  const bool two = total > 14;
  QFormLayout* form = NewForm();
  columns->addLayout(form, 1);
  int used = 0;
  for (int slot : shown) {
    ConstFieldDefinition field = db_.definition().field(slot);
    if (two && columns->count() == 1 && used * 2 >= total) {
      columns->addSpacing(16);
      form = NewForm();
      columns->addLayout(form, 1);
    }
    used += RowWeight(field.type());
    if (field.type() == kHeading) {
      auto* heading = new QLabel(Wide(field.name()), body);
      QFont bold = heading->font();
      bold.setBold(true);
      bold.setPointSizeF(bold.pointSizeF() * 1.1);
      heading->setFont(bold);
      heading->setContentsMargins(0, 8, 0, 2);
      form->addRow(heading);
      continue;
    }
    FieldControl* control = FieldControl::Create(db_, slot, workspace_.options, body);
    auto* label = new QLabel(Wide(field.name()) + ":", body);
    label->setBuddy(control->widget());
    form->addRow(label, control->widget());
    controls_[slot] = control;
    control->SetReadOnly(view_only_);
    connect(control, &FieldControl::edited, this, [this] {
      dirty_ = true;
      RefreshComputed();
    });
    connect(control, &FieldControl::editPopupsRequested, this, &RecordEditorDialog::EditPopups);
    connect(control, &FieldControl::externalSelected, this, &RecordEditorDialog::SelectExternal);
    connect(control, &FieldControl::linkRequested, this, &RecordEditorDialog::LinkRequested);
  }
  for (int i = 0; i < columns->count(); ++i)
    if (auto* f = qobject_cast<QFormLayout*>(columns->itemAt(i)->layout()))
      f->setRowWrapPolicy(QFormLayout::DontWrapRows);
  auto* scroll = new QScrollArea(this);
  scroll->setWidget(body);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  two_columns_ = two;
}

FieldControl* RecordEditorDialog::control(int slot) const {
  auto it = controls_.find(slot);
  return it == controls_.end() ? nullptr : it->second;
}

bool RecordEditorDialog::Start() {
  if (number_ != kNewRecord && number_ < db_.count()) {
    if (!ShowStored(number_)) return false;
  } else {
    if (view_only_ || !Allowed(Guarded::AddRecords)) return false;
    Show(kNewRecord, NewValues());
  }
  return true;
}

void RecordEditorDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  // Typing starts in the first field that takes typing.
  for (auto slot : UsedFieldsInDisplayOrder(db_.definition())) {
    FieldControl* c = control(slot);
    if (c && !c->computed() && c->widget()->focusPolicy() != Qt::NoFocus) {
      c->widget()->setFocus();
      break;
    }
  }
}

RecordValues RecordEditorDialog::NewValues() const {
  RecordValues values = DefaultValues(db_);
  LinkNewRecord(workspace_, db_, values);
  if (db_.definition().record_header_on()) {
    RandomBytes random;
    RecordHeader header = NewRecordHeader(random);
    values.prefix.assign(header.bytes.begin(), header.bytes.end());
  }
  return values;
}

bool RecordEditorDialog::ShowStored(std::uint32_t number) {
  if (number >= db_.count()) return false;
  // Enciphered values are never shown as values: deciphered first, or not shown at all.
  const bool enciphered = HasFlag(db_.records[number].data, kRecordFieldsEnciphered);
  if (enciphered && !access_.DecipherRecord(workspace_, db_, number)) return false;
  deciphered_ = enciphered;
  changed_ = changed_ || enciphered;
  Show(number, DecodeRecord(db_.records[number].data));
  return true;
}

void RecordEditorDialog::Show(std::uint32_t number, const RecordValues& values) {
  number_ = number;
  shown_ = values;
  // What the plug-ins set up in a stored record is stored when the user leaves it, like a typed
  // change; a new record is still only stored once the user has entered something.
  const bool set_up = RunExternalFields(db_, kInitExternal, number, shown_) && number != kNewRecord;
  for (auto& [slot, control] : controls_)
    control->Load(shown_.values[static_cast<std::size_t>(slot)]);
  encrypt_->setChecked(HasFlag(values.prefix, kRecordManualEncrypt));
  if (alarm_) alarm_->Load(values.prefix);
  dirty_ = set_up && !view_only_;
  if (number != kNewRecord) db_.current = number;
  QString name = Wide(db_.name);
  setWindowTitle(number == kNewRecord
                     ? tr("%1 - New Record").arg(name)
                     : tr("%1 - Record %2 of %3").arg(name).arg(number + 1).arg(db_.count()));
  UpdateButtons();
  RefreshComputed();
}

void RecordEditorDialog::UpdateButtons() {
  const int at = static_cast<int>(number_ == kNewRecord ? db_.count() : number_);
  previous_->setEnabled(StepPassingRecords(db_, at, -1) >= 0);
  next_->setEnabled(number_ != kNewRecord && StepPassingRecords(db_, at, 1) >= 0);
  for (QPushButton* b : {new_, duplicate_}) b->setEnabled(!view_only_);
  duplicate_->setEnabled(!view_only_ && number_ != kNewRecord);
  delete_->setEnabled(!view_only_ && number_ != kNewRecord);
  auto row = std::find(db_.visible.begin(), db_.visible.end(), number_);
  position_->setText(
      number_ == kNewRecord ? tr("new record")
      : row == db_.visible.end()
          ? tr("outside the filter")
          : tr("%1 of %2").arg(row - db_.visible.begin() + 1).arg(db_.visible.size()));
}

std::optional<RecordValues> RecordEditorDialog::Gather(bool report) {
  RecordValues values = shown_;
  for (auto& [slot, control] : controls_) {
    if (control->computed()) continue;
    auto value = control->Value();
    if (!value) {
      if (!report) continue;
      std::string name = Cp1252ToUtf8(db_.definition().field(slot).name());
      std::string type(FieldTypeName(db_.definition().field_type(slot)));
      workspace_.prompter.message("'" + control->text().toStdString() + "' is not a valid " + type +
                                      " value for " + name + ".",
                                  "Error", Icon::Exclamation);
      control->widget()->setFocus();
      return std::nullopt;
    }
    values.Set(slot, std::move(*value));
  }
  if (values.prefix.size() >= kRecordHeaderSize) {
    std::uint8_t& flags = values.prefix[record_header::kFlags];
    flags =
        encrypt_->isChecked() ? (flags | kRecordManualEncrypt) : (flags & ~kRecordManualEncrypt);
  }
  return values;
}

void RecordEditorDialog::RefreshComputed() {
  bool any = false;
  for (auto& [slot, control] : controls_) any = any || control->computed();
  if (!any) return;
  auto values = Gather(false);
  if (!values) return;
  Bytes record = EncodeRecord(db_.definition(), *values);
  const std::uint32_t at = number_ == kNewRecord ? db_.count() : number_;
  // A trial computation: the database's changed-field bookkeeping stays as it was.
  auto flags = db_.field_changed;
  ComputeRecordFormulas(db_, db_.definition(), record, PreviousInDisplayOrder(db_, at),
                        workspace_.prompter);
  db_.field_changed = flags;
  for (auto& [slot, control] : controls_)
    if (control->computed()) control->Load(ValueBytes(record, slot));
}

bool RecordEditorDialog::StoreShown() {
  // An untouched new record is not stored.
  if (view_only_ || !dirty_) {
    LeaveDeciphered();
    return true;
  }
  auto values = Gather(true);
  if (!values) return false;
  RunExternalFields(db_, kSaveExternal, number_, *values);
  workspace_.prompter.busy(true);
  auto stored = StoreRecordSorted(db_, *values, number_, true, workspace_.prompter);
  workspace_.prompter.busy(false);
  if (!stored) {
    workspace_.prompter.message("The database holds 65,000 records, the most it can hold.", "Error",
                                Icon::Exclamation);
    return false;
  }
  number_ = *stored;
  db_.current = number_;
  if (alarm_) alarm_->Store(number_);
  changed_ = true;
  dirty_ = false;
  deciphered_ = true;  // the stored record is plain until the close step enciphers it
  LeaveDeciphered();
  return true;
}

void RecordEditorDialog::LeaveDeciphered() {
  if (!deciphered_ || number_ >= db_.count()) return;
  deciphered_ = false;
  access_.EncipherRecord(workspace_, db_, number_, encrypt_->isChecked());
}

bool RecordEditorDialog::Allowed(Guarded action) {
  return access_.CheckAccess(workspace_, db_, action, true) == kAccessFull;
}

void RecordEditorDialog::Step(int direction) {
  if (!StoreShown()) return;
  const int at = static_cast<int>(number_ == kNewRecord ? db_.count() : number_);
  int next = StepPassingRecords(db_, at, direction);
  if (next < 0) return;
  if (!ShowStored(static_cast<std::uint32_t>(next))) UpdateButtons();
}

void RecordEditorDialog::NewRecord() {
  if (view_only_ || !StoreShown() || !Allowed(Guarded::AddRecords)) return;
  Show(kNewRecord, NewValues());
  if (!controls_.empty()) controls_.begin()->second->widget()->setFocus();
}

void RecordEditorDialog::DuplicateRecord() {
  if (view_only_ || number_ == kNewRecord || !StoreShown() || !Allowed(Guarded::AddRecords)) return;
  RecordValues values = DecodeRecord(db_.records[number_].data);
  RecordValues fresh = NewValues();
  values.prefix = fresh.prefix;
  // The copy takes new numbers in Unique fields.
  for (int slot = 0; slot < kFieldSlots; ++slot)
    if (db_.definition().field_type(slot) == kUnique)
      values.Set(slot, fresh.values[static_cast<std::size_t>(slot)]);
  Show(kNewRecord, values);
  dirty_ = true;
}

void RecordEditorDialog::DeleteRecord() {
  if (view_only_ || number_ == kNewRecord || !Allowed(Guarded::DeleteRecords)) return;
  if (workspace_.prompter.ask("Delete this record? (Y/N)", "QUESTION", Buttons::YesNo,
                              Icon::Question) != Answer::Yes)
    return;
  const int at = static_cast<int>(number_);
  deciphered_ = false;
  DeleteRecordsAndRecalculate(db_, {number_}, workspace_.prompter);
  db_.changed = true;
  changed_ = true;
  int next = StepPassingRecords(db_, at - 1, 1);
  if (next < 0) next = StepPassingRecords(db_, at, -1);
  if (next < 0 || !ShowStored(static_cast<std::uint32_t>(next))) {
    db_.current = 0;
    QDialog::accept();
  }
}

void RecordEditorDialog::EditPopups(int slot) {
  if (!Allowed(Guarded::EditPopups)) return;
  FieldRecord& items = db_.schema.fields[static_cast<std::size_t>(slot)];
  PopupListEditor editor(items.texts, this);
  if (editor.exec() != QDialog::Accepted) return;
  auto current = Gather(false);
  items.SetItems(editor.items());
  db_.changed = true;
  changed_ = true;
  if (current && controls_.count(slot))
    controls_[slot]->Load(current->values[static_cast<std::size_t>(slot)]);
}

void RecordEditorDialog::SelectExternal(int slot) {
  auto values = view_only_ ? std::nullopt : Gather(false);
  if (!values || !CallExternal(AppPluginPlaces(), slot, kSelectExternal, db_,
                               static_cast<std::uint16_t>(number_), *values))
    return;
  shown_ = *values;
  for (auto& [s, control] : controls_) control->Load(shown_.values[static_cast<std::size_t>(s)]);
  dirty_ = true;
  RefreshComputed();
}

void RecordEditorDialog::accept() {
  if (StoreShown()) QDialog::accept();
}

void RecordEditorDialog::reject() {
  LeaveDeciphered();
  QDialog::reject();
}

}  // namespace qv::app
