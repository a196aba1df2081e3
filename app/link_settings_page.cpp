#include "app/link_settings_page.h"

#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <functional>

#include "app/note_label.h"
#include "engine/container.h"
#include "engine/field_settings.h"
#include "engine/text.h"
#include "processing/linked_database.h"
#include "security/access.h"
#include "security/settings.h"

namespace qv::app {

namespace {

using link_settings::kNoField;

QString Wide(std::string_view cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}
std::string Narrow(const QString& text) {
  return Utf8ToCp1252(text.toStdString());
}

// The fields of `d` that `takes` in display order, after an entry for none. The none entry
// carries the stored byte when that names no offered field, so leaving it alone keeps the byte.
void FillFields(QComboBox* box, const QString& none, const DatabaseDefinition& d, int skip,
                std::uint8_t stored, const std::function<bool(unsigned)>& takes) {
  box->clear();
  for (int s : UsedFieldsInDisplayOrder(d))
    if (s != skip && takes(d.field_type(s))) box->addItem(Wide(d.field(s).name()), s);
  const int at = box->findData(static_cast<int>(stored));
  box->insertItem(0, none, at >= 0 ? int{kNoField} : int{stored});
  box->setCurrentIndex(at + 1);
}

// The other database's fields a field of `type` can go by.
bool OtherFieldFits(unsigned type, unsigned other) {
  switch (type) {
    case kLink:
      return other == kLinked;
    case kRelationship:
      return other == kLinked || other == kUnique || other == kInteger;
    default:
      return other != kHeading && other != kImage && other != kLink && other != kRelationship;
  }
}

}  // namespace

LinkSettingsPage::LinkSettingsPage(const Database& db, int slot, QWidget* parent)
    : QWidget(parent), db_(db), slot_(slot) {
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  form_ = new QFormLayout;
  form_->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  outer->addLayout(form_);
  outer->addStretch(1);
  target_ = new QLineEdit(this);
  target_->setMaxLength(31);
  target_->setPlaceholderText(tr("the other database's name, as its title shows it"));
  key_box_ = new QComboBox(this);
  key_box_->setToolTip(tr("This database's Integer or Unique field that holds each record's key"));
  other_label_ = new QLabel(this);
  // The list of the other database's fields, or the entry for one when they are not at hand.
  other_stack_ = new QStackedWidget(this);
  other_stack_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  other_box_ = new QComboBox(other_stack_);
  other_edit_ = new QLineEdit(other_stack_);
  other_edit_->setPlaceholderText(tr("a field name, or its number (1 for the first field)"));
  other_stack_->addWidget(other_box_);
  other_stack_->addWidget(other_edit_);
  pair_ = new QSpinBox(this);
  pair_->setRange(0, 255);
  pair_->setSpecialValueText(tr("none"));
  pair_->setToolTip(tr("DB Popup fields of the same group are filled from one picked record"));
  status_ = Note(QString(), this);
  about_ = Note(QString(), this);
  form_->addRow(tr("Linked &database:"), target_);
  form_->addRow(QString(), status_);
  form_->addRow(tr("&Key field:"), key_box_);
  form_->addRow(other_label_, other_stack_);
  form_->addRow(tr("&Pairing group:"), pair_);
  form_->addRow(QString(), about_);
  connect(target_, &QLineEdit::editingFinished, this, [this] {
    if (looked_up_ != target_->text().trimmed()) LookUp();
  });
  FillKeyFields();
  LookUp();
}

LinkSettingsPage::~LinkSettingsPage() = default;

void LinkSettingsPage::Load(ConstFieldDefinition field) {
  loaded_ = true;
  source_ = field.bytes()[link_settings::kSourceField];
  other_ = field.bytes()[link_settings::kOtherField];
  pair_->setValue(field.bytes()[link_settings::kPairGroup]);
  FillKeyFields();
  target_->setText(Wide(LinkTarget(field)));
  type_ = field.type();
  LookUp();
}

void LinkSettingsPage::FillKeyFields() {
  FillFields(key_box_, tr("(none chosen)"), db_.definition(), slot_, source_,
             [](unsigned t) { return t == kInteger || t == kUnique; });
}

void LinkSettingsPage::SetType(unsigned type) {
  if (type == type_) return;
  type_ = type;
  Refill();
}

void LinkSettingsPage::LookUp() {
  looked_up_ = target_->text().trimmed();
  other_db_.reset();
  offered_ = false;
  const std::string name = Narrow(looked_up_);
  auto path = name.empty() ? std::nullopt : FindDatabaseByName(name, db_.path);
  auto other = std::make_unique<Database>();
  SilentPrompter quiet;
  if (path && LoadDatabase(*other, *path, quiet, LoadParts::Schema)) {
    const DatabaseDefinition& d = other->definition();
    offered_ =
        GetAccess(d, kOpenDatabase) == kFullAccess && !(d.settings_flags() & kDatabaseEnciphered);
    other_db_ = std::move(other);
  }
  file_name_ = path ? QFileInfo(QString::fromStdString(*path)).fileName() : QString();
  Refill();
}

// The other database's field, its rows and the explanations for the current type.
void LinkSettingsPage::Refill() {
  const std::uint8_t stored = type_ == kDbPopup ? source_ : other_;
  const unsigned type = type_;
  if (offered_)
    FillFields(other_box_,
               type_ == kLink ? tr("(its Linked field naming this database)") : tr("(none chosen)"),
               other_db_->definition(), -1, stored,
               [type](unsigned t) { return OtherFieldFits(type, t); });
  else
    other_box_->clear();
  other_edit_->setText(loaded_ && stored < kFieldSlots ? QString::number(stored + 1) : QString());
  ShowRows();
}

void LinkSettingsPage::ShowRow(QWidget* field, bool shown) {
  form_->labelForField(field)->setVisible(shown);
  field->setVisible(shown);
}

void LinkSettingsPage::ShowRows() {
  const bool goes_by_field = type_ != kLinked;
  ShowRow(other_stack_, goes_by_field);
  other_stack_->setCurrentWidget(offered_ ? static_cast<QWidget*>(other_box_) : other_edit_);
  other_label_->setBuddy(other_stack_->currentWidget());
  ShowRow(key_box_, type_ == kRelationship);
  ShowRow(pair_, type_ == kDbPopup);
  const QString label = type_ == kDbPopup ? tr("Shown &field:")
                        : type_ == kLink  ? tr("Its Linked &field:")
                                          : tr("Matched &field:");
  other_label_->setText(label);
  switch (type_) {
    case kLink:
      about_->setText(
          tr("A Link field shows the records of the linked database whose Linked "
             "field holds this record's key, and opens them."));
      break;
    case kLinked:
      about_->setText(
          tr("A Linked field holds the key of the record in the linked database "
             "that this record belongs to, and shows that record."));
      break;
    case kDbPopup:
      about_->setText(
          tr("A DB Popup picks its value from the shown field of a record of the "
             "linked database. DB Popup fields of the same pairing group and "
             "database are filled from the same picked record."));
      break;
    default:
      about_->setText(
          tr("A Relationship relates a record to the records of the linked "
             "database whose matched field holds the value of this record's key "
             "field."));
  }
  ShowStatus();
}

void LinkSettingsPage::ShowStatus() {
  const QString& name = looked_up_;
  const bool typed = type_ != kLinked;
  if (name.isEmpty())
    status_->setText(tr("The database is looked for in this database's folder."));
  else if (offered_)
    status_->setText(tr("Found in this folder as %1.").arg(file_name_));
  else if (other_db_)
    status_->setText(tr("\u201c%1\u201d needs a password to open, so its fields are not listed "
                        "here.%2")
                         .arg(name, typed ? tr(" Type the field's name, or its number (1 for "
                                               "the other database's first field).")
                                          : QString()));
  else
    status_->setText(tr("\u201c%1\u201d is not in this database's folder (or cannot be read), "
                        "so its fields are not listed here.%2")
                         .arg(name, typed ? tr(" Type the field's number (1 for the other "
                                               "database's first field).")
                                          : QString()));
}

std::string LinkSettingsPage::OtherFieldOf(std::uint8_t& byte) const {
  if (offered_) {
    byte = static_cast<std::uint8_t>(other_box_->currentData().toInt());
    return {};
  }
  const QString text = other_edit_->text().trimmed();
  if (text.isEmpty()) return {};  // left as stored
  bool number = false;
  const uint n = text.toUInt(&number);
  if (number) {
    if (n < 1 || n > static_cast<uint>(kFieldSlots))
      return tr("A field number is 1 to %1.").arg(kFieldSlots).toStdString();
    byte = static_cast<std::uint8_t>(n - 1);
    return {};
  }
  if (!other_db_)
    return tr("The field \u201c%1\u201d cannot be looked up while \u201c%2\u201d is not in this "
              "database's folder; type its number instead.")
        .arg(text, looked_up_)
        .toStdString();
  auto field = other_db_->definition().FindField(Narrow(text));
  if (!field)
    return tr("\u201c%1\u201d has no field named \u201c%2\u201d.")
        .arg(looked_up_, text)
        .toStdString();
  byte = static_cast<std::uint8_t>(*field);
  return {};
}

std::string LinkSettingsPage::Apply(FieldDefinition field, unsigned type) const {
  const std::size_t at =
      type == kDbPopup ? link_settings::kSourceField : link_settings::kOtherField;
  std::uint8_t other = field.bytes()[at];
  if (type != kLinked) {
    std::string problem = OtherFieldOf(other);
    if (!problem.empty()) return problem;
  }
  SetLinkTarget(field, Narrow(target_->text().trimmed()));
  auto bytes = field.bytes();
  if (type != kLinked) bytes[at] = other;
  if (type == kDbPopup)
    bytes[link_settings::kPairGroup] = static_cast<std::uint8_t>(pair_->value());
  if (type == kRelationship)
    bytes[link_settings::kSourceField] = static_cast<std::uint8_t>(key_box_->currentData().toInt());
  return {};
}

}  // namespace qv::app
