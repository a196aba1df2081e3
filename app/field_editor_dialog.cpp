#include "app/field_editor_dialog.h"

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
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/column_layout.h"
#include "app/external_calls.h"
#include "app/link_settings_page.h"
#include "app/note_label.h"
#include "app/popup_list_editor.h"
#include "app/stored_text_guard.h"
#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/text.h"
#include "processing/conditional.h"
#include "processing/field_edit.h"
#include "processing/formula.h"
#include "processing/formula_builder.h"
#include "processing/formula_text.h"
#include "processing/sort.h"

namespace qv::app {

namespace {

QString Wide(std::string_view cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}
std::string Narrow(const QString& text) {
  return Utf8ToCp1252(text.toStdString());
}

const char* const kResultKinds[] = {
    "Decimal (4 places)", "Integer",          "Time", "Date", "Decimal (3 places)",
    "Decimal (2 places)", "Decimal (1 place)"};

enum Page {
  kEmptyPage,
  kDefaultPage,
  kPopupPage,
  kUniquePage,
  kCalculatedPage,
  kConditionalPage,
  kTargetPage,
  kPluginPage
};

Page PageOf(unsigned type) {
  switch (type) {
    case kText:
    case kInteger:
    case kFloat:
    case kCheckBox:
    case kDate:
    case kTime:
    case kNote:
      return kDefaultPage;
    case kPopUp:
      return kPopupPage;
    case kUnique:
      return kUniquePage;
    case kCalculated:
      return kCalculatedPage;
    case kConditional:
      return kConditionalPage;
    case kLink:
    case kLinked:
    case kDbPopup:
    case kRelationship:
      return kTargetPage;
    case kExternal:
      return kPluginPage;
    default:
      return kEmptyPage;
  }
}

// A page's form, its rows kept at the top.
QFormLayout* Form(QWidget* page) {
  auto* outer = new QVBoxLayout(page);
  outer->setContentsMargins(0, 0, 0, 0);
  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  outer->addLayout(form);
  outer->addStretch(1);
  return form;
}

}  // namespace

FieldEditorDialog::FieldEditorDialog(Workspace& workspace, Database& db, int slot, QWidget* parent)
    : QDialog(parent), workspace_(workspace), db_(db), slot_(slot) {
  setWindowTitle(slot < 0 ? tr("New Field") : tr("Field Properties"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(BuildGeneral());
  layout->addWidget(BuildSettings(), 1);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &FieldEditorDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(type_, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &FieldEditorDialog::TypeChanged);
  Load();
  TypeChanged();
  name_->setFocus();
  resize(600, 520);
  GuardStoredTexts(this);
}

QWidget* FieldEditorDialog::BuildGeneral() {
  auto* box = new QGroupBox(tr("Field"), this);
  auto* form = new QFormLayout(box);
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  name_ = new QLineEdit(box);
  name_->setMaxLength(static_cast<int>(kMaxFieldName));
  type_ = new QComboBox(box);
  for (unsigned code = 1; code < kFieldTypeCount; ++code)
    type_->addItem(QString::fromLatin1(FieldTypeName(code).data(),
                                       static_cast<int>(FieldTypeName(code).size())),
                   code);
  length_ = new QSpinBox(box);
  length_->setRange(1, 2000);
  length_->setToolTip(tr("The most characters a text holds"));
  shown_ = new QCheckBox(tr("Show as a column of the list, width"), box);
  width_ = new QSpinBox(box);
  width_->setRange(10, 900);
  width_->setSuffix(tr(" pixels"));
  auto* column = new QHBoxLayout;
  column->addWidget(shown_);
  column->addWidget(width_);
  column->addStretch(1);
  connect(shown_, &QCheckBox::toggled, width_, &QWidget::setEnabled);
  encrypted_ = new QCheckBox(tr("Encrypt this field's values"), box);
  form->addRow(tr("&Name:"), name_);
  form->addRow(tr("&Type:"), type_);
  form->addRow(tr("&Length:"), length_);
  form->addRow(tr("List:"), column);
  form->addRow(QString(), encrypted_);
  static_cast<QLabel*>(form->labelForField(name_))->setBuddy(name_);
  return box;
}

QWidget* FieldEditorDialog::BuildSettings() {
  auto* box = new QGroupBox(tr("Settings"), this);
  settings_box_ = box;
  auto* layout = new QVBoxLayout(box);
  pages_ = new QStackedWidget(box);
  pages_->addWidget(EmptyPage());
  pages_->addWidget(DefaultPage());
  pages_->addWidget(PopupPage());
  pages_->addWidget(UniquePage());
  pages_->addWidget(CalculatedPage());
  pages_->addWidget(ConditionalPage());
  pages_->addWidget(TargetPage());
  pages_->addWidget(PluginPage());
  layout->addWidget(pages_, 1);
  return box;
}

QWidget* FieldEditorDialog::EmptyPage() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(Note(tr("This type of field has no further settings."), page));
  layout->addStretch(1);
  return page;
}

QWidget* FieldEditorDialog::DefaultPage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  default_ = new QLineEdit(page);
  default_->setToolTip(tr("The value a new record starts with; empty for none"));
  decimals_ = new QSpinBox(page);
  decimals_->setRange(0, 9);
  decimals_->setSpecialValueText(tr("as typed"));
  form->addRow(tr("&Default value:"), default_);
  form->addRow(tr("De&cimals:"), decimals_);
  decimals_label_ = static_cast<QLabel*>(form->labelForField(decimals_));
  return page;
}

QWidget* FieldEditorDialog::PopupPage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  items_list_ = new QListWidget(page);
  items_list_->setFocusPolicy(Qt::NoFocus);
  items_list_->setMaximumHeight(120);
  auto* edit = new QPushButton(tr("&Edit List..."), page);
  edit->setAutoDefault(false);
  sort_popups_ = new QCheckBox(tr("Sort by the items' text (else by their first letter)"), page);
  popup_default_ = new QLineEdit(page);
  auto* list_row = new QHBoxLayout;
  list_row->addWidget(items_list_, 1);
  list_row->addWidget(edit, 0, Qt::AlignTop);
  form->addRow(tr("Items:"), list_row);
  form->addRow(QString(), sort_popups_);
  form->addRow(tr("&Default item:"), popup_default_);
  connect(edit, &QPushButton::clicked, this, [this] {
    PopupListEditor editor(items_, this);
    if (editor.exec() != QDialog::Accepted) return;
    items_ = editor.items();
    FillItems();
  });
  return page;
}

QWidget* FieldEditorDialog::UniquePage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  unique_start_ = new QSpinBox(page);
  unique_start_->setRange(0, 999999999);
  form->addRow(tr("&First number:"), unique_start_);
  form->addRow(
      QString(),
      Note(tr("Each new record takes the next number; the numbers cannot be typed."), page));
  return page;
}

QWidget* FieldEditorDialog::CalculatedPage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  formula_ = new QLineEdit(page);
  formula_->setPlaceholderText(tr("for example ({Price} * {Qty}) + 2"));
  insert_field_ = FieldChooser(tr("Insert a field..."));
  auto* operators = new QHBoxLayout;
  operators->addWidget(insert_field_, 1);
  for (const char* op : {"+", "-", "*", "/", "^", "(", ")"}) {
    auto* b = new QPushButton(QString::fromLatin1(op), page);
    b->setAutoDefault(false);
    b->setFocusPolicy(Qt::NoFocus);
    b->setFixedWidth(b->fontMetrics().horizontalAdvance("MM") + 12);
    connect(b, &QPushButton::clicked, this,
            [this, op] { formula_->insert(QString(" %1 ").arg(op)); });
    operators->addWidget(b);
  }
  auto* functions = new QComboBox(page);
  functions->addItem(tr("Insert a function..."));
  for (const char* f : {"Sqrt", "Sin", "Cos", "Ln", "Log", "Floor", "Ceil", "min", "max", "avg"})
    functions->addItem(QString::fromLatin1(f));
  connect(functions, QOverload<int>::of(&QComboBox::activated), this, [this, functions](int i) {
    if (i <= 0) return;
    formula_->insert(functions->itemText(i) + "(");
    functions->setCurrentIndex(0);
    formula_->setFocus();
  });
  connect(insert_field_, QOverload<int>::of(&QComboBox::activated), this, [this](int i) {
    if (i <= 0) return;
    formula_->insert("{" + insert_field_->itemText(i) + "}");
    insert_field_->setCurrentIndex(0);
    formula_->setFocus();
  });
  operators->addWidget(functions);
  result_kind_ = new QComboBox(page);
  for (const char* k : kResultKinds) result_kind_->addItem(tr(k));
  program_ = Note(QString(), page);
  form->addRow(tr("&Formula:"), formula_);
  form->addRow(QString(), operators);
  form->addRow(tr("&Result:"), result_kind_);
  form->addRow(QString(),
               Note(tr("Fields by name in braces, P{Name} for the previous record's value; "
                       "at most 11 steps and 6 constants."),
                    page));
  form->addRow(tr("Program:"), program_);
  return page;
}

QWidget* FieldEditorDialog::ConditionalPage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  test_field_ = FieldChooser(tr("(no field)"));
  test_op_ = new QComboBox(page);
  for (int op = 0; op < kConditionalOperators; ++op)
    test_op_->addItem(QString::fromStdString(std::string(ConditionalOperatorText(op))));
  test_value_ = new QLineEdit(page);
  test_value_->setMaxLength(19);
  then_field_ = FieldChooser(tr("this text:"));
  then_text_ = new QLineEdit(page);
  then_text_->setMaxLength(15);
  else_field_ = FieldChooser(tr("this text:"));
  else_text_ = new QLineEdit(page);
  else_text_->setMaxLength(15);
  auto pair = [](QWidget* a, QWidget* b) {
    auto* row = new QHBoxLayout;
    row->addWidget(a);
    row->addWidget(b, 1);
    return row;
  };
  form->addRow(tr("&If field:"), test_field_);
  form->addRow(tr("Is:"), pair(test_op_, test_value_));
  form->addRow(tr("&Then:"), pair(then_field_, then_text_));
  form->addRow(tr("&Else:"), pair(else_field_, else_text_));
  form->addRow(QString(), Note(tr("Dates are compared as day numbers and times as seconds; "
                                  "choose a field to copy its value instead of a text."),
                               page));
  connect(then_field_, QOverload<int>::of(&QComboBox::currentIndexChanged), then_text_,
          [this](int i) { then_text_->setEnabled(i == 0); });
  connect(else_field_, QOverload<int>::of(&QComboBox::currentIndexChanged), else_text_,
          [this](int i) { else_text_->setEnabled(i == 0); });
  return page;
}

QWidget* FieldEditorDialog::TargetPage() {
  link_page_ = new LinkSettingsPage(db_, slot_, this);
  return link_page_;
}

QLineEdit* FieldEditorDialog::targetEdit() const {
  return link_page_->targetEdit();
}

QWidget* FieldEditorDialog::PluginPage() {
  auto* page = new QWidget(this);
  auto* form = Form(page);
  plugin_ = new QLineEdit(page);
  plugin_->setMaxLength(19);
  auto* configure = new QPushButton(tr("Configure..."), page);
  configure->setToolTip(tr("Let the plug-in set its options for this field"));
  configure->setEnabled(false);
  connect(plugin_, &QLineEdit::textChanged, configure,
          [configure](const QString& text) { configure->setEnabled(!text.trimmed().isEmpty()); });
  connect(configure, &QPushButton::clicked, this, &FieldEditorDialog::ConfigurePlugin);
  auto* row = new QHBoxLayout;
  row->addWidget(plugin_, 1);
  row->addWidget(configure);
  auto* label = new QLabel(tr("&Plug-in:"), page);
  label->setBuddy(plugin_);
  form->addRow(label, row);
  form->addRow(QString(),
               Note(tr("The plug-in NAME is the library libNAME.so in the data folder's plugins "
                       "folder or on the library path. It sets the field's value when a record "
                       "is opened, stored, or its button is pressed."),
                    page));
  return page;
}

void FieldEditorDialog::ConfigurePlugin() {
  // A new field is configured for the slot it will take.
  int slot = slot_;
  for (int s = 0; slot < 0 && s < kFieldSlots; ++s)
    if (!db_.definition().field(s).used()) slot = s;
  ConfigureExternal(AppPluginPlaces(), slot, Narrow(plugin_->text().trimmed()), db_,
                    plugin_settings_, workspace_.prompter);
}

QComboBox* FieldEditorDialog::FieldChooser(const QString& none) {
  auto* box = new QComboBox(this);
  box->addItem(none, -1);
  for (int s : UsedFieldsInDisplayOrder(db_.definition()))
    if (s != slot_) box->addItem(Wide(db_.definition().field(s).name()), s);
  return box;
}

void FieldEditorDialog::FillItems() {
  items_list_->clear();
  for (const std::string& t : items_)
    if (!t.empty()) items_list_->addItem(Wide(t));
}

unsigned FieldEditorDialog::chosenType() const {
  return type_->currentData().toUInt();
}

void FieldEditorDialog::SelectType(unsigned type) {
  type_->setCurrentIndex(type_->findData(type));
}

void FieldEditorDialog::Load() {
  if (slot_ < 0) {
    name_->setText(tr("New Field"));
    name_->selectAll();
    SelectType(kText);
    length_->setValue(40);
    shown_->setChecked(true);
    width_->setValue(ShownWidth(58));
    return;
  }
  const DatabaseDefinition& d = db_.definition();
  ConstFieldDefinition f = d.field(slot_);
  name_->setText(Wide(f.name()));
  SelectType(f.type());
  length_->setValue(static_cast<int>(std::clamp(f.length(), 1u, 2000u)));
  shown_->setChecked(f.width() > 0);
  width_->setValue(f.width() > 0 ? ShownWidth(f.width()) : ShownWidth(58));
  width_->setEnabled(f.width() > 0);
  encrypted_->setChecked(f.encrypted());
  default_->setText(Wide(DefaultText(db_, slot_, workspace_.options)));
  popup_default_->setText(default_->text());
  decimals_->setValue(f.type() == kFloat ? f.settings()[0] : 0);
  items_ = db_.schema.fields[static_cast<std::size_t>(slot_)].texts;
  FillItems();
  sort_popups_->setChecked(f.type() == kPopUp && SortPopups(f));
  unique_start_->setValue(static_cast<int>(std::min<std::uint32_t>(UniqueStart(f), 999999999)));
  if (f.type() == kCalculated) {
    formula_->setText(Wide(FormulaInfixText(d, slot_)));
    int kind = static_cast<std::int8_t>(f.bytes()[formula::kResultKind]);
    result_kind_->setCurrentIndex(kind >= 0 && kind <= 6 ? kind : 0);
    program_->setText(Wide(FormulaDisplayText(d, slot_)));
  }
  if (f.type() == kConditional) {
    ConditionalSettings s = ConditionalSettings::Read(f);
    auto pick = [](QComboBox* box, int s) { box->setCurrentIndex(std::max(0, box->findData(s))); };
    pick(test_field_, s.test_field);
    test_op_->setCurrentIndex(s.op < kConditionalOperators ? s.op : 0);
    test_value_->setText(Wide(s.value));
    pick(then_field_, s.then_field);
    then_text_->setText(Wide(s.then_text));
    pick(else_field_, s.else_field);
    else_text_->setText(Wide(s.else_text));
  }
  if (PageOf(f.type()) == kTargetPage) link_page_->Load(f);
  if (f.type() == kExternal) {
    plugin_->setText(Wide(PluginName(f)));
    plugin_settings_ = GetPluginSettings(f);
  }
}

void FieldEditorDialog::TypeChanged() {
  const unsigned type = chosenType();
  pages_->setCurrentIndex(PageOf(type));
  settings_box_->setTitle(tr("Settings of a %1 field").arg(type_->currentText()));
  const bool takes_length = type == kText || type == kNote || type == kDbPopup || type == kExternal;
  length_->setEnabled(takes_length);
  const bool float_type = type == kFloat;
  decimals_->setVisible(float_type);
  decimals_label_->setVisible(float_type);
  link_page_->SetType(type);
}

bool FieldEditorDialog::ApplySettings(Database& db, int slot, unsigned type) {
  FieldDefinition f = db.definition().field(slot);
  Prompter& prompter = workspace_.prompter;
  auto refuse = [&](const std::string& text) {
    prompter.message(Cp1252ToUtf8(text), "Error", Icon::Exclamation);
    return false;
  };
  switch (PageOf(type)) {
    case kDefaultPage: {
      if (type == kFloat) f.settings()[0] = static_cast<std::uint8_t>(decimals_->value());
      std::string problem = SetDefaultText(db, slot, Narrow(default_->text()), workspace_.options);
      if (!problem.empty()) {
        default_->setFocus();
        return refuse(problem);
      }
      return true;
    }
    case kPopupPage: {
      SetPopupItems(db, slot, items_);
      SetSortPopups(f, sort_popups_->isChecked());
      std::string problem =
          SetDefaultText(db, slot, Narrow(popup_default_->text()), workspace_.options);
      if (!problem.empty()) {
        popup_default_->setFocus();
        return refuse(problem);
      }
      return true;
    }
    case kUniquePage:
      SetUniqueStart(f, static_cast<std::uint32_t>(unique_start_->value()));
      return true;
    case kCalculatedPage: {
      f.bytes()[formula::kResultKind] = static_cast<std::uint8_t>(result_kind_->currentIndex());
      if (formula_->text().trimmed().isEmpty()) {
        f.bytes()[formula::kCount] = 0;  // no formula yet: the value is 0
        return true;
      }
      // The formula builder's own refusals are shown as they stand.
      if (!BuildFormula(db.definition(), slot, Narrow(formula_->text()), prompter)) {
        formula_->setFocus();
        return false;
      }
      return true;
    }
    case kConditionalPage: {
      ConditionalSettings s;
      s.test_field = test_field_->currentData().toInt();
      s.op = static_cast<std::uint8_t>(test_op_->currentIndex());
      s.value = Narrow(test_value_->text());
      s.then_field = then_field_->currentData().toInt();
      s.then_text = Narrow(then_text_->text());
      s.else_field = else_field_->currentData().toInt();
      s.else_text = Narrow(else_text_->text());
      s.Write(f);
      return true;
    }
    case kTargetPage: {
      std::string problem = link_page_->Apply(f, type);
      if (!problem.empty()) {
        prompter.message(problem, "Error", Icon::Exclamation);
        return false;
      }
      return true;
    }
    case kPluginPage: {
      std::string name = Narrow(plugin_->text().trimmed());
      if (name.find_first_of("/\\") != std::string::npos)
        return refuse("A plug-in name holds no path separator.");
      SetPluginName(f, name);
      SetPluginSettings(f, plugin_settings_);
      return true;
    }
    default:
      return true;
  }
}

bool FieldEditorDialog::Apply(Database& db) {
  Prompter& prompter = workspace_.prompter;
  const std::string name = Narrow(name_->text().trimmed());
  const unsigned type = chosenType();
  const unsigned length = static_cast<unsigned>(length_->value());
  int slot = slot_;
  if (slot < 0) {
    std::string problem;
    auto added = AddField(db, name, static_cast<FieldType>(type), length, kFieldSlots, problem);
    if (!added) {
      prompter.message(Cp1252ToUtf8(problem), "Error", Icon::Exclamation);
      return false;
    }
    slot = *added;
  } else {
    std::string problem = RenameField(db, slot, name);
    if (!problem.empty()) {
      prompter.message(Cp1252ToUtf8(problem), "Error", Icon::Exclamation);
      name_->setFocus();
      return false;
    }
    ConstFieldDefinition f = db.definition().field(slot);
    if (f.type() != type || f.length() != length) {
      auto impact =
          AssessTypeChange(db, slot, static_cast<FieldType>(type), length, workspace_.options);
      if (!impact.refusal.empty()) {
        prompter.message(Cp1252ToUtf8(impact.refusal), "Error", Icon::Exclamation);
        return false;
      }
      std::string text = impact.Describe(name);
      if (impact.NeedsConsent() &&
          prompter.ask(Cp1252ToUtf8(text) + "\nChange the field anyway?", "Question",
                       Buttons::YesNo, Icon::Question) != Answer::Yes)
        return false;
      ChangeFieldType(db, slot, static_cast<FieldType>(type), length, workspace_.options, prompter);
    }
  }
  FieldDefinition f = db.definition().field(slot);
  f.set_width(shown_->isChecked() ? std::max(1u, StoredWidth(width_->value())) : 0);
  std::string problem = SetFieldEncrypted(db, slot, encrypted_->isChecked());
  if (!problem.empty()) {
    prompter.message(Cp1252ToUtf8(problem), "Error", Icon::Exclamation);
    return false;
  }
  if (!ApplySettings(db, slot, type)) return false;
  RecalculateAll(db, prompter);
  slot_ = slot;
  return true;
}

void FieldEditorDialog::accept() {
  // Everything is tried on a copy first, so a refusal halfway leaves the database as it was.
  Database trial = db_;
  const int before = slot_;
  if (!Apply(trial)) {
    slot_ = before;
    return;
  }
  db_ = std::move(trial);
  db_.changed = true;
  QDialog::accept();
}

}  // namespace qv::app
