#include "app/properties_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/alarm_settings_page.h"
#include "app/field_editor_dialog.h"
#include "app/note_label.h"
#include "app/security_access_dialog.h"
#include "app/stored_text_guard.h"
#include "app/views_dialog.h"
#include "engine/text.h"
#include "processing/field_edit.h"
#include "processing/views.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv::app {

namespace {

QString Wide(std::string_view cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}

QPushButton* Button(const QString& text, QWidget* parent) {
  auto* b = new QPushButton(text, parent);
  b->setAutoDefault(false);
  return b;
}

bool AnyRecordEnciphered(const Database& db) {
  for (const RecordSlot& r : db.records) {
    auto header = ReadRecordHeader(r.data);
    if (header && (header->has(kRecordFieldsEnciphered) || header->has(kRecordBodyEnciphered)))
      return true;
  }
  return false;
}

}  // namespace

PropertiesDialog::PropertiesDialog(Workspace& workspace, AccessGate& access, const Database& db,
                                   QWidget* parent)
    : QDialog(parent), workspace_(workspace), access_(access), copy_(db) {
  setWindowTitle(tr("%1 - Database Properties").arg(Wide(db.name)));
  tabs_ = new QTabWidget(this);
  tabs_->addTab(GeneralPage(), tr("&General"));
  tabs_->addTab(FieldsPage(), tr("&Fields"));
  tabs_->addTab(ViewsPage(), tr("&Views"));
  tabs_->addTab(SecurityPage(), tr("&Security"));
  tabs_->addTab(AlarmsPage(), tr("Alar&m Settings"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_, 1);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &PropertiesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  FillFields(-1);
  resize(640, 520);
  GuardStoredTexts(this);
}

void PropertiesDialog::ShowPage(int page) {
  tabs_->setCurrentIndex(page);
}

QWidget* PropertiesDialog::GeneralPage() {
  auto* page = new QWidget(this);
  auto* form = new QFormLayout(page);
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  name_ = new QLineEdit(Wide(copy_.name), page);
  name_->setMaxLength(31);
  lookup_ = new QComboBox(page);
  lookup_->setToolTip(tr("Typing in the record list looks for records by this field"));
  form->addRow(tr("Database &name:"), name_);
  form->addRow(tr("&Look-up field:"), lookup_);
  form->addRow(tr("Records:"), new QLabel(QString::number(copy_.count()), page));
  form->addRow(
      tr("File:"),
      new QLabel(copy_.unsaved() ? tr("not saved yet") : QString::fromStdString(copy_.path), page));
  return page;
}

void PropertiesDialog::FillLookup() {
  lookup_->clear();
  for (int slot : UsedFieldsInDisplayOrder(copy_.definition()))
    lookup_->addItem(Wide(copy_.definition().field(slot).name()), slot);
  lookup_->setCurrentIndex(std::max(0, lookup_->findData(copy_.definition().lookup_field())));
}

QWidget* PropertiesDialog::FieldsPage() {
  auto* page = new QWidget(this);
  fields_ = new QListWidget(page);
  auto* add = Button(tr("&Add..."), page);
  auto* edit = Button(tr("&Edit..."), page);
  auto* remove = Button(tr("&Delete"), page);
  auto* up = Button(tr("Move &Up"), page);
  auto* down = Button(tr("Move Do&wn"), page);
  auto* side = new QVBoxLayout;
  for (QPushButton* b : {add, edit, remove, up, down}) side->addWidget(b);
  side->addStretch(1);
  auto* row = new QHBoxLayout;
  row->addWidget(fields_, 1);
  row->addLayout(side);
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(row, 1);
  layout->addWidget(Note(tr("Fields in the order the list and the record editor show them. "
                            "Double-click or press Enter on a field to edit it."),
                         page));
  connect(add, &QPushButton::clicked, this, &PropertiesDialog::AddField);
  connect(edit, &QPushButton::clicked, this, &PropertiesDialog::EditSelectedField);
  connect(fields_, &QListWidget::itemActivated, this, &PropertiesDialog::EditSelectedField);
  connect(remove, &QPushButton::clicked, this, &PropertiesDialog::DeleteSelectedField);
  connect(up, &QPushButton::clicked, this, [this] { MoveSelectedField(-1); });
  connect(down, &QPushButton::clicked, this, [this] { MoveSelectedField(1); });
  return page;
}

void PropertiesDialog::FillFields(int select_slot) {
  filling_ = true;
  fields_->clear();
  for (int slot : UsedFieldsInDisplayOrder(copy_.definition())) {
    ConstFieldDefinition f = copy_.definition().field(slot);
    std::string_view type = FieldTypeName(f.type());
    auto* item = new QListWidgetItem(
        QString("%1\t%2").arg(Wide(f.name()),
                              QString::fromLatin1(type.data(), static_cast<int>(type.size()))),
        fields_);
    item->setData(Qt::UserRole, slot);
    if (slot == select_slot) fields_->setCurrentItem(item);
  }
  if (!fields_->currentItem() && fields_->count() > 0) fields_->setCurrentRow(0);
  filling_ = false;
  FillLookup();
  FillEncryptFlags();
}

int PropertiesDialog::SelectedSlot() const {
  QListWidgetItem* item = fields_->currentItem();
  return item ? item->data(Qt::UserRole).toInt() : -1;
}

void PropertiesDialog::AddField() {
  FieldEditorDialog editor(workspace_, copy_, -1, this);
  emit fieldEditorOpened(&editor);
  if (editor.exec() == QDialog::Accepted) FillFields(editor.slot());
}

void PropertiesDialog::EditSelectedField() {
  int slot = SelectedSlot();
  if (slot < 0) return;
  FieldEditorDialog editor(workspace_, copy_, slot, this);
  emit fieldEditorOpened(&editor);
  if (editor.exec() == QDialog::Accepted) FillFields(editor.slot());
}

void PropertiesDialog::DeleteSelectedField() {
  int slot = SelectedSlot();
  if (slot < 0) return;
  std::string name = copy_.definition().field(slot).name();
  FieldChangeImpact impact = AssessDelete(copy_, slot);
  Prompter& prompter = workspace_.prompter;
  if (!impact.refusal.empty()) {
    prompter.message(Cp1252ToUtf8(impact.refusal), "Error", Icon::Exclamation);
    return;
  }
  std::string question = "Delete the field '" + name + "'?\n" + impact.Describe(name);
  if (prompter.ask(Cp1252ToUtf8(question), "Question", Buttons::YesNo, Icon::Question) !=
      Answer::Yes)
    return;
  int row = fields_->currentRow();
  DeleteField(copy_, slot, prompter);
  FillFields(-1);
  fields_->setCurrentRow(std::min(row, fields_->count() - 1));
}

void PropertiesDialog::MoveSelectedField(int by) {
  int slot = SelectedSlot();
  int position = FieldPosition(copy_.definition(), slot);
  if (slot < 0 || position + by < 0 || position + by >= fields_->count()) return;
  MoveField(copy_, slot, position + by);
  FillFields(slot);
}

QWidget* PropertiesDialog::ViewsPage() {
  auto* page = new QWidget(this);
  views_ = new QListWidget(page);
  views_->setFocusPolicy(Qt::NoFocus);
  auto* edit = Button(tr("&Edit Views..."), page);
  auto* row = new QHBoxLayout;
  row->addWidget(views_, 1);
  auto* side = new QVBoxLayout;
  side->addWidget(edit);
  side->addStretch(1);
  row->addLayout(side);
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(row, 1);
  layout->addWidget(Note(tr("A view keeps the field order, column widths, filter and sort; choose "
                            "one from the list above the records."),
                         page));
  connect(edit, &QPushButton::clicked, this, [this] {
    ViewsDialog dialog(copy_, workspace_.options, workspace_.prompter, this);
    dialog.exec();
    FillViews();
  });
  FillViews();
  return page;
}

void PropertiesDialog::FillViews() {
  views_->clear();
  for (const std::string& name : ViewNames(copy_)) views_->addItem(Wide(name));
  if (views_->count() == 0) views_->addItem(tr("(no views yet)"));
}

QWidget* PropertiesDialog::SecurityPage() {
  auto* page = new QWidget(this);
  auto* access = new QGroupBox(tr("Access"), page);
  auto* permissions = Button(tr("Set Access &Permissions..."), access);
  auto* password = Button(tr("Set Access Pass&word..."), access);
  auto* access_row = new QHBoxLayout(access);
  access_row->addWidget(permissions);
  access_row->addWidget(password);
  access_row->addStretch(1);
  auto* encryption = new QGroupBox(tr("Encryption"), page);
  auto* modes = new QVBoxLayout(encryption);
  modes_ = new QButtonGroup(this);
  for (int mode = 0; mode < kEncryptionModes; ++mode) {
    std::string_view label = EncryptionModeLabel(mode);
    auto* radio = new QRadioButton(
        QString::fromLatin1(label.data(), static_cast<int>(label.size())), encryption);
    modes_->addButton(radio, mode);
    modes->addWidget(radio);
  }
  modes_->button(GetEncryptionMode(copy_.definition()))->setChecked(true);
  auto* marked = new QGroupBox(tr("Fields encrypted in modes 1 and 2 (marked fields)"), page);
  encrypt_flags_ = new QListWidget(marked);
  auto* marked_layout = new QVBoxLayout(marked);
  marked_layout->addWidget(encrypt_flags_);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(access);
  layout->addWidget(encryption);
  layout->addWidget(marked, 1);
  connect(permissions, &QPushButton::clicked, this, [this] {
    SecurityAccessDialog dialog(copy_.definition(), this);
    if (dialog.exec() != QDialog::Accepted) return;
    dialog.Store(copy_.definition());
    copy_.changed = true;
  });
  connect(password, &QPushButton::clicked, this, [this] {
    if (access_.ChangeAccessPassword(workspace_, copy_)) copy_.changed = true;
  });
  connect(modes_, &QButtonGroup::idClicked, this, &PropertiesDialog::ModeChosen);
  connect(encrypt_flags_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
    if (filling_) return;
    int slot = item->data(Qt::UserRole).toInt();
    std::string problem = SetFieldEncrypted(copy_, slot, item->checkState() == Qt::Checked);
    if (problem.empty()) return;
    workspace_.prompter.message(Cp1252ToUtf8(problem), "Error", Icon::Exclamation);
    FillEncryptFlags();
  });
  return page;
}

void PropertiesDialog::FillEncryptFlags() {
  filling_ = true;
  encrypt_flags_->clear();
  for (int slot : UsedFieldsInDisplayOrder(copy_.definition())) {
    ConstFieldDefinition f = copy_.definition().field(slot);
    auto* item = new QListWidgetItem(Wide(f.name()), encrypt_flags_);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(f.encrypted() ? Qt::Checked : Qt::Unchecked);
    item->setData(Qt::UserRole, slot);
  }
  filling_ = false;
}

void PropertiesDialog::SetEncryptionChoice(int mode) {
  if (auto* b = modes_->button(mode)) b->setChecked(true);
  ModeChosen(mode);
}

void PropertiesDialog::ModeChosen(int mode) {
  const int old = GetEncryptionMode(copy_.definition());
  if (mode == old) return;
  // Records enciphered under one mode cannot be read back under another.
  if (AnyRecordEnciphered(copy_)) {
    workspace_.prompter.message(
        "Records of this database are enciphered; decipher them before "
        "changing the encryption.",
        "Error", Icon::Exclamation);
    modes_->button(old)->setChecked(true);
    return;
  }
  SetEncryptionMode(copy_.definition(), mode);
  // Encrypted records need the record header that holds their flags and checksum.
  if (mode != kEncryptionDisabled) EnableRecordHeaders(copy_);
  copy_.changed = true;
}

QWidget* PropertiesDialog::AlarmsPage() {
  alarms_page_ = new AlarmSettingsPage(copy_, this);
  return alarms_page_;
}

void PropertiesDialog::accept() {
  if (UsedFieldsInDisplayOrder(copy_.definition()).empty()) {
    workspace_.prompter.message("A database needs at least one field: add one on the Fields page.",
                                "Error", Icon::Exclamation);
    ShowPage(kFieldsPage);
    return;
  }
  std::string name = Utf8ToCp1252(name_->text().trimmed().toStdString());
  if (name.empty()) {
    workspace_.prompter.message("A database needs a name.", "Error", Icon::Exclamation);
    ShowPage(kGeneralPage);
    name_->setFocus();
    return;
  }
  if (name != copy_.name) {
    copy_.name = name;
    copy_.header.SetName(name);
  }
  if (QString problem = alarms_page_->Problem(); !problem.isEmpty()) {
    workspace_.prompter.message(problem.toStdString(), "Error", Icon::Exclamation);
    ShowPage(kAlarmsPage);
    return;
  }
  alarms_page_->Store(copy_);
  if (lookup_->currentIndex() >= 0 &&
      lookup_->currentData().toInt() != copy_.definition().lookup_field())
    copy_.definition().data()[def::kLookupField] =
        static_cast<std::uint8_t>(lookup_->currentData().toInt());
  QDialog::accept();
}

void PropertiesDialog::TakeResult(Database& db) {
  db = std::move(copy_);
  db.changed = true;
}

}  // namespace qv::app
