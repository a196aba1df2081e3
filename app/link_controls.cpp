#include "app/link_controls.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "app/linked_navigation.h"
#include "engine/field_settings.h"
#include "engine/record.h"
#include "engine/text.h"

namespace qv::app {

namespace {

QString Wide(const std::string& utf8) {
  return QString::fromStdString(utf8);
}

class LinkControl : public FieldControl {
 public:
  LinkControl(const Database& db, int slot, const FormatOptions& options, QWidget* parent)
      : FieldControl(slot, parent), db_(db), options_(options) {
    box_ = new QWidget(parent);
    auto* layout = new QVBoxLayout(box_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    const unsigned type = db.definition().field_type(slot);
    const QString target = Wide(Cp1252ToUtf8(LinkTarget(db.definition().field(slot))));
    if (type == kLinked) {
      auto* row = new QHBoxLayout;
      shown_ = new QLineEdit(box_);
      shown_->setReadOnly(true);
      shown_->setFocusPolicy(Qt::ClickFocus);
      shown_->setPlaceholderText(tr("no record of %1").arg(target));
      button_ = new QPushButton(tr("Reassign..."), box_);
      button_->setToolTip(tr("Make this record belong to another record of %1").arg(target));
      row->addWidget(shown_, 1);
      row->addWidget(button_);
      layout->addLayout(row);
    } else {
      list_ = new QListWidget(box_);
      list_->setObjectName("linkedRecords");
      list_->setFocusPolicy(Qt::ClickFocus);
      list_->setSelectionMode(QAbstractItemView::NoSelection);
      auto* row = new QHBoxLayout;
      summary_ = new QLabel(box_);
      button_ = new QPushButton(tr("Open Linked Records"), box_);
      button_->setToolTip(tr("Show the records of %1 that belong to this record").arg(target));
      row->addWidget(summary_, 1);
      row->addWidget(button_);
      layout->addWidget(list_);
      layout->addLayout(row);
      target_ = target;
    }
    connect(button_, &QPushButton::clicked, this, [this] { emit linkRequested(this->slot()); });
  }
  QWidget* widget() const override { return box_; }
  void Load(std::span<const std::uint8_t> value) override {
    value_.assign(value.begin(), value.end());
    if (shown_) {
      shown_->setText(
          value.size() > link_settings::kLinkedBlock
              ? Wide(Cp1252ToUtf8(ValueText(value.subspan(link_settings::kLinkedBlock))))
              : QString());
      return;
    }
    FillList();
  }
  std::optional<Bytes> Value() const override { return value_; }
  void SetReadOnly(bool on) override {
    if (shown_) button_->setEnabled(!on);
  }
  QString text() const override {
    if (shown_) return shown_->text();
    QStringList rows;
    for (int i = 0; i < list_->count(); ++i) rows << list_->item(i)->text();
    return rows.join('\n');
  }

 private:
  void FillList() {
    list_->clear();
    const std::uint32_t key =
        db_.definition().field_type(slot()) == kLink ? ValueUInt32(value_) : 0;
    if (db_.definition().field_type(slot()) != kLink) {
      list_->hide();
      summary_->setText(tr("records of %1").arg(target_));
      return;
    }
    auto texts = LinkedRecordTexts(db_, slot(), key, options_);
    if (!texts) {
      summary_->setText(tr("%1 opens with its own permission").arg(target_));
      list_->hide();
      return;
    }
    for (const std::string& t : *texts) list_->addItem(t.empty() ? tr("(empty)") : Wide(t));
    list_->setVisible(!texts->empty());
    // As tall as its records, two to six rows; more scroll.
    const int row = list_->count() > 0 ? list_->sizeHintForRow(0) : list_->fontMetrics().height();
    list_->setFixedHeight(std::clamp(list_->count(), 2, 6) * row + 2 * list_->frameWidth() + 4);
    summary_->setText(texts->empty() ? tr("no linked records in %1 yet").arg(target_)
                      : texts->size() == 1
                          ? tr("1 linked record in %1").arg(target_)
                          : tr("%1 linked records in %2").arg(texts->size()).arg(target_));
  }

  const Database& db_;
  FormatOptions options_;
  QWidget* box_;
  QLineEdit* shown_ = nullptr;
  QListWidget* list_ = nullptr;
  QLabel* summary_ = nullptr;
  QPushButton* button_ = nullptr;
  QString target_;
  Bytes value_;
};

class DbPopupControl : public FieldControl {
 public:
  DbPopupControl(const Database& db, int slot, const FormatOptions& options, QWidget* parent)
      : FieldControl(slot, parent) {
    ConstFieldDefinition field = db.definition().field(slot);
    limit_ = static_cast<int>(std::max(field.length(), 1u));
    combo_ = new QComboBox(parent);
    combo_->setEditable(true);
    combo_->setInsertPolicy(QComboBox::NoInsert);
    combo_->lineEdit()->setMaxLength(limit_);
    const int source = field.bytes()[link_settings::kSourceField];
    if (auto other = ReadLinkedQuietly(db, slot); other && source < kFieldSlots) {
      for (std::uint32_t n : other->visible) {
        combo_->addItem(Wide(Cp1252ToUtf8(RecordValueText(*other, n, source, options))));
        records_.push_back(n);
      }
    }
    combo_->setToolTip(tr("A value of %1").arg(Wide(Cp1252ToUtf8(LinkTarget(field)))));
    connect(combo_->lineEdit(), &QLineEdit::textEdited, this, [this] {
      picked_.reset();
      emit edited();
    });
    connect(combo_, &QComboBox::activated, this, [this](int index) {
      if (index < 0 || index >= static_cast<int>(records_.size())) return;
      picked_ = records_[static_cast<std::size_t>(index)];
      emit edited();
      emit linkRequested(this->slot());
    });
  }
  QWidget* widget() const override { return combo_; }
  void Load(std::span<const std::uint8_t> value) override {
    picked_.reset();
    combo_->setCurrentIndex(-1);
    combo_->setEditText(Wide(Cp1252ToUtf8(ValueText(value))));
  }
  std::optional<Bytes> Value() const override {
    return TextValue(Utf8ToCp1252(combo_->currentText().left(limit_).toStdString()));
  }
  void SetReadOnly(bool on) override { combo_->setEnabled(!on); }
  bool SetText(const QString& text) override {
    if (!combo_->isEnabled()) return false;
    combo_->setEditText(text);
    emit edited();
    return combo_->currentText() == text;
  }
  QString text() const override { return combo_->currentText(); }
  std::optional<std::uint32_t> picked() const { return picked_; }

 private:
  QComboBox* combo_;
  int limit_;
  std::vector<std::uint32_t> records_;
  std::optional<std::uint32_t> picked_;
};

}  // namespace

std::optional<std::uint32_t> PickedRecord(const FieldControl* control) {
  auto* popup = dynamic_cast<const DbPopupControl*>(control);
  return popup ? popup->picked() : std::nullopt;
}

FieldControl* CreateDbPopupControl(const Database& db, int slot, const FormatOptions& options,
                                   QWidget* parent) {
  return new DbPopupControl(db, slot, options, parent);
}

FieldControl* CreateLinkControl(const Database& db, int slot, const FormatOptions& options,
                                QWidget* parent) {
  return new LinkControl(db, slot, options, parent);
}

}  // namespace qv::app
