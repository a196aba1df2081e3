#include "app/field_controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>

#include "app/date_chooser.h"
#include "app/external_calls.h"
#include "app/image_editor.h"
#include "app/link_controls.h"
#include "app/time_chooser.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"

namespace qv::app {

namespace {

QString Wide(std::string_view cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}
std::string Narrow(const QString& text) {
  return Utf8ToCp1252(text.toStdString());
}

// Text, DB Popup and External values: one line, at most the field length (or what the record
// holds already, so nothing stored is cut by merely opening it).
class LineControl : public FieldControl {
 public:
  LineControl(int slot, int limit, QWidget* parent) : FieldControl(slot, parent), limit_(limit) {
    edit_ = new QLineEdit(parent);
    edit_->setMaxLength(limit);
    connect(edit_, &QLineEdit::textEdited, this, &FieldControl::edited);
  }
  QWidget* widget() const override { return edit_; }
  void Load(std::span<const std::uint8_t> value) override {
    QString text = Wide(ValueText(value));
    edit_->setMaxLength(std::max<int>(limit_, static_cast<int>(text.size())));
    edit_->setText(text);
  }
  std::optional<Bytes> Value() const override { return TextValue(Narrow(edit_->text())); }
  void SetReadOnly(bool on) override { edit_->setReadOnly(on); }
  bool SetText(const QString& text) override {
    if (edit_->isReadOnly()) return false;
    edit_->setText(text);
    emit edited();
    return edit_->text() == text;
  }
  QString text() const override { return edit_->text(); }

 private:
  QLineEdit* edit_;
  int limit_;
};

class NoteControl : public FieldControl {
 public:
  NoteControl(int slot, int limit, QWidget* parent) : FieldControl(slot, parent), limit_(limit) {
    edit_ = new QPlainTextEdit(parent);
    edit_->setTabChangesFocus(true);
    edit_->setMinimumHeight(72);
    edit_->setMaximumHeight(110);
    connect(edit_, &QPlainTextEdit::textChanged, this, [this] {
      if (loading_) return;
      QString text = edit_->toPlainText();
      if (text.size() > shown_limit_) {
        text.truncate(shown_limit_);
        edit_->setPlainText(text);
        edit_->moveCursor(QTextCursor::End);
      }
      emit edited();
    });
  }
  QWidget* widget() const override { return edit_; }
  void Load(std::span<const std::uint8_t> value) override {
    loading_ = true;
    QString text = Wide(ValueText(value));
    shown_limit_ = std::max<int>(limit_, static_cast<int>(text.size()));
    edit_->setPlainText(text);
    loading_ = false;
  }
  std::optional<Bytes> Value() const override { return TextValue(Narrow(edit_->toPlainText())); }
  void SetReadOnly(bool on) override { edit_->setReadOnly(on); }
  bool SetText(const QString& text) override {
    if (edit_->isReadOnly()) return false;
    edit_->setPlainText(text);
    return edit_->toPlainText() == text;
  }
  QString text() const override { return edit_->toPlainText(); }

 private:
  QPlainTextEdit* edit_;
  int limit_;
  int shown_limit_ = 0;
  bool loading_ = false;
};

// Integer, Float, Date and Time: typed as the list shows them, checked as they are typed; date
// and time fields have a chooser that offers "No Date" and "No Time".
class TypedControl : public FieldControl {
 public:
  TypedControl(const Database& db, int slot, const FormatOptions& options, QWidget* parent)
      : FieldControl(slot, parent),
        field_(db.definition().field(slot)),
        items_(db.schema.fields[static_cast<std::size_t>(slot)]),
        options_(options) {
    box_ = new QWidget(parent);
    box_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* row = new QHBoxLayout(box_);
    row->setContentsMargins(0, 0, 0, 0);
    edit_ = new QLineEdit(box_);
    row->addWidget(edit_, 1);
    const unsigned type = field_.type();
    if (type == kDate || type == kTime) {
      chooser_ = new QToolButton(box_);
      chooser_->setText(type == kDate ? tr("Date...") : tr("Time..."));
      chooser_->setToolTip(tr("Choose from a calendar or clock (Alt+Down in the field)"));
      row->addWidget(chooser_);
      connect(chooser_, &QToolButton::clicked, this, [this] { Choose(); });
      MakeChooserShortcut();
    }
    edit_->setPlaceholderText(Hint(type));
    connect(edit_, &QLineEdit::textEdited, this, [this] {
      Check();
      emit edited();
    });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override {
    edit_->setText(Wide(FormatValue(field_, value, options_)));
    Check();
  }
  std::optional<Bytes> Value() const override {
    return ParseValue(field_, items_, Narrow(edit_->text()), options_);
  }
  void SetReadOnly(bool on) override {
    edit_->setReadOnly(on);
    if (chooser_) chooser_->setEnabled(!on);
  }
  bool SetText(const QString& text) override {
    if (edit_->isReadOnly()) return false;
    edit_->setText(text);
    Check();
    emit edited();
    return Value().has_value();
  }
  QString text() const override { return edit_->text(); }

 private:
  static QString Hint(unsigned type) {
    switch (type) {
      case kInteger:
        return tr("whole number");
      case kFloat:
        return tr("number");
      case kDate:
        return tr("date, or NO DATE");
      case kTime:
        return tr("time, or No Time");
      default:
        return {};
    }
  }
  void MakeChooserShortcut() {
    auto* action = new QAction(edit_);
    action->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Down));
    action->setShortcutContext(Qt::WidgetShortcut);
    edit_->addAction(action);
    connect(action, &QAction::triggered, this, [this] { Choose(); });
  }
  void Check() {
    // A red frame says the entry is not a value yet; storing it is refused with a message.
    edit_->setStyleSheet(Value() ? QString()
                                 : QStringLiteral("QLineEdit { border: 1px solid #c03030; }"));
  }
  void Choose() {
    auto value = Value();
    Bytes current = value.value_or(Bytes{});
    if (field_.type() == kDate) {
      DateChooser chooser(DateNumberToDmy(ValueUInt32(current)), box_);
      if (chooser.exec() != QDialog::Accepted) return;
      Load(UInt32Value(DmyToDateNumber(chooser.date())));
    } else {
      TimeOfDay now{255, 0, 0};
      if (current.size() >= 3) now = {current[2], current[1], current[0]};
      TimeChooser chooser(now, box_);
      if (chooser.exec() != QDialog::Accepted) return;
      TimeOfDay t = chooser.time();
      Load(TimeValue(t.hours, t.minutes, t.seconds));
    }
    emit edited();
  }

  ConstFieldDefinition field_;
  const FieldRecord& items_;
  FormatOptions options_;
  QWidget* box_;
  QLineEdit* edit_;
  QToolButton* chooser_ = nullptr;
};

class PopupControl : public FieldControl {
 public:
  PopupControl(const Database& db, int slot, QWidget* parent)
      : FieldControl(slot, parent), items_(db.schema.fields[static_cast<std::size_t>(slot)]) {
    box_ = new QWidget(parent);
    box_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* row = new QHBoxLayout(box_);
    row->setContentsMargins(0, 0, 0, 0);
    combo_ = new QComboBox(box_);
    edit_ = new QPushButton(tr("Edit Popups..."), box_);
    edit_->setAutoDefault(false);
    row->addWidget(combo_, 1);
    row->addWidget(edit_);
    Fill(QString());
    connect(combo_, QOverload<int>::of(&QComboBox::activated), this, &FieldControl::edited);
    connect(edit_, &QPushButton::clicked, this, [this] { emit editPopupsRequested(this->slot()); });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override { Fill(Wide(ValueText(value))); }
  std::optional<Bytes> Value() const override {
    // The stored item text is at most 13 characters.
    return TextValue(Narrow(combo_->currentText()).substr(0, 13));
  }
  void SetReadOnly(bool on) override {
    combo_->setEnabled(!on);
    edit_->setEnabled(!on);
  }
  bool SetText(const QString& text) override {
    int i = combo_->findText(text);
    if (i < 0 || !combo_->isEnabled()) return false;
    combo_->setCurrentIndex(i);
    emit edited();
    return true;
  }
  QString text() const override { return combo_->currentText(); }

 private:
  // The items, an empty choice, and a value no longer in the list so nothing is lost.
  void Fill(const QString& current) {
    combo_->clear();
    combo_->addItem(QString());
    for (const std::string& t : items_.texts)
      if (!t.empty()) combo_->addItem(Wide(t));
    if (!current.isEmpty() && combo_->findText(current) < 0) combo_->addItem(current);
    combo_->setCurrentIndex(std::max(0, combo_->findText(current)));
  }
  const FieldRecord& items_;
  QWidget* box_;
  QComboBox* combo_;
  QPushButton* edit_;
};

class CheckControl : public FieldControl {
 public:
  CheckControl(int slot, QWidget* parent) : FieldControl(slot, parent) {
    box_ = new QCheckBox(parent);
    connect(box_, &QCheckBox::toggled, this, [this] {
      if (!loading_) emit edited();
    });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override {
    loading_ = true;
    box_->setChecked(!value.empty() && value[0] != 0);
    loading_ = false;
  }
  std::optional<Bytes> Value() const override { return CheckValue(box_->isChecked()); }
  void SetReadOnly(bool on) override { box_->setEnabled(!on); }
  bool SetText(const QString& text) override {
    box_->setChecked(text == "1");
    return true;
  }
  QString text() const override { return box_->isChecked() ? "1" : "0"; }

 private:
  QCheckBox* box_;
  bool loading_ = false;
};

class ImageControl : public FieldControl {
 public:
  ImageControl(int slot, QWidget* parent) : FieldControl(slot, parent) {
    box_ = new QWidget(parent);
    box_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* row = new QHBoxLayout(box_);
    row->setContentsMargins(0, 0, 0, 0);
    image_ = new ImageEditor(box_);
    auto* buttons = new QVBoxLayout;
    clear_ = new QPushButton(tr("Clear"), box_);
    import_ = new QPushButton(tr("Import..."), box_);
    for (QPushButton* b : {clear_, import_}) {
      b->setAutoDefault(false);
      buttons->addWidget(b);
    }
    buttons->addStretch(1);
    row->addWidget(image_);
    row->addLayout(buttons);
    row->addStretch(1);
    connect(image_, &ImageEditor::edited, this, &FieldControl::edited);
    connect(clear_, &QPushButton::clicked, image_, &ImageEditor::Clear);
    connect(import_, &QPushButton::clicked, this, [this] { Import(); });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override { image_->Load(value); }
  std::optional<Bytes> Value() const override { return image_->Value(); }
  void SetReadOnly(bool on) override {
    image_->setReadOnly(on);
    clear_->setEnabled(!on);
    import_->setEnabled(!on);
  }
  ImageEditor* editor() const { return image_; }

 private:
  void Import() {
    QStringList formats;
    for (const QByteArray& f : QImageReader::supportedImageFormats()) formats << "*." + QString(f);
    QString file = QFileDialog::getOpenFileName(box_, tr("Import Picture"), QString(),
                                                tr("Pictures (%1)").arg(formats.join(' ')));
    if (!file.isEmpty()) image_->SetPicture(QImage(file));
  }
  QWidget* box_;
  ImageEditor* image_;
  QPushButton* clear_;
  QPushButton* import_;
};

// Values the user does not type here: shown, kept as they are (computed ones are refreshed).
class ShownControl : public FieldControl {
 public:
  ShownControl(const Database& db, int slot, const FormatOptions& options, QWidget* parent)
      : FieldControl(slot, parent), field_(db.definition().field(slot)), options_(options) {
    edit_ = new QLineEdit(parent);
    edit_->setReadOnly(true);
    edit_->setFocusPolicy(Qt::ClickFocus);
    QPalette p = edit_->palette();
    p.setColor(QPalette::Base, p.color(QPalette::Window));
    edit_->setPalette(p);
    edit_->setPlaceholderText(Note(field_.type()));
  }
  QWidget* widget() const override { return edit_; }
  void Load(std::span<const std::uint8_t> value) override {
    value_.assign(value.begin(), value.end());
    const unsigned type = field_.type();
    std::string text =
        type == kLinked ? std::string(value.size() > 24 ? ValueText(value.subspan(24)) : "")
        : type == kLink ? (ValueUInt32(value) == 0 ? "" : std::to_string(ValueUInt32(value)))
                        : FormatValue(field_, value, options_);
    edit_->setText(Wide(text));
  }
  std::optional<Bytes> Value() const override { return value_; }
  void SetReadOnly(bool) override {}
  bool computed() const override {
    return field_.type() == kCalculated || field_.type() == kConditional;
  }
  QString text() const override { return edit_->text(); }

 private:
  static QString Note(unsigned type) {
    switch (type) {
      case kLink:
      case kLinked:
      case kRelationship:
        return tr("follows the linked database (not available yet)");
      default:
        return {};
    }
  }
  ConstFieldDefinition field_;
  FormatOptions options_;
  QLineEdit* edit_;
  Bytes value_;
};

}  // namespace

bool FieldControl::SetText(const QString&) {
  return false;
}
QString FieldControl::text() const {
  return {};
}

FieldControl* FieldControl::Create(const Database& db, int slot, const FormatOptions& options,
                                   QWidget* parent) {
  ConstFieldDefinition field = db.definition().field(slot);
  const int length = static_cast<int>(std::max(field.length(), 1u));
  switch (field.type()) {
    case kText:
      return new LineControl(slot, length, parent);
    case kDbPopup:
      return CreateDbPopupControl(db, slot, options, parent);
    case kNote:
      return new NoteControl(slot, std::min(length, 2001), parent);
    case kInteger:
    case kFloat:
    case kDate:
    case kTime:
      return new TypedControl(db, slot, options, parent);
    case kPopUp:
      return new PopupControl(db, slot, parent);
    case kCheckBox:
      return new CheckControl(slot, parent);
    case kImage:
      return new ImageControl(slot, parent);
    case kExternal:
      return NewExternalControl(db, slot, parent);
    case kLink:
    case kLinked:
    case kRelationship:
      return CreateLinkControl(db, slot, options, parent);
    default:
      return new ShownControl(db, slot, options, parent);
  }
}

}  // namespace qv::app
