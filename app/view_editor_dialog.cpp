#include "app/view_editor_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <cstring>

#include "app/column_layout.h"
#include "app/field_choices.h"
#include "app/filters_dialog.h"
#include "app/sort_dialog.h"
#include "app/stored_text_guard.h"
#include "engine/text.h"
#include "processing/views.h"

namespace qv::app {

namespace {

constexpr int kSlotRole = Qt::UserRole;
constexpr int kWidthRole = Qt::UserRole + 1;  // pixels
// A field shown again after it was hidden gets the width new fields get.
constexpr unsigned kDefaultStoredWidth = 50;

}  // namespace

ViewEditorDialog::ViewEditorDialog(Database& db, int view, const FormatOptions& options,
                                   Prompter& prompter, QWidget* parent)
    : QDialog(parent), db_(db), view_(view), options_(options), prompter_(prompter) {
  setWindowTitle(tr("Edit View"));
  const std::uint8_t* block = db.definition().view_block(view);
  saved_.assign(block, block + kViewSize);
  db_changed_ = db.changed;

  name_ = new QLineEdit(QString::fromStdString(Cp1252ToUtf8(ViewName(db, view))), this);
  name_->setMaxLength(31);
  fields_ = new QListWidget(this);
  for (int slot : ViewFieldOrder(db, view)) {
    if (slot >= kFieldSlots || !IsListType(db.definition().field_type(slot))) continue;
    auto* item = new QListWidgetItem(FieldName(db.definition(), slot), fields_);
    const unsigned stored = ViewFieldWidth(db, view, slot);
    item->setData(kSlotRole, slot);
    item->setData(kWidthRole, ShownWidth(stored > 0 ? stored : kDefaultStoredWidth));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(stored > 0 ? Qt::Checked : Qt::Unchecked);
  }
  width_ = new QSpinBox(this);
  width_->setRange(8, 900);
  width_->setSuffix(tr(" pixels"));
  auto* up = new QPushButton(tr("Move &Up"), this);
  auto* down = new QPushButton(tr("Move &Down"), this);
  connect(up, &QPushButton::clicked, this, [this] { MoveCurrent(-1); });
  connect(down, &QPushButton::clicked, this, [this] { MoveCurrent(1); });
  connect(fields_, &QListWidget::currentRowChanged, this, &ViewEditorDialog::CurrentChanged);
  connect(width_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int px) {
    if (QListWidgetItem* item = fields_->currentItem()) item->setData(kWidthRole, px);
  });
  auto* filter = new QPushButton(tr("&Filter..."), this);
  auto* sort = new QPushButton(tr("&Sort..."), this);
  connect(filter, &QPushButton::clicked, this, [this] {
    FiltersDialog dialog(db_, view_, options_, prompter_, this);
    dialog.exec();
  });
  connect(sort, &QPushButton::clicked, this, [this] {
    SortDialog dialog(db_, view_, prompter_, this);
    dialog.exec();
  });

  for (QPushButton* b : {up, down, filter, sort}) b->setAutoDefault(false);
  auto* form = new QFormLayout;
  form->addRow(tr("&Name:"), name_);
  auto* fields_label = new QLabel(tr("Fi&elds shown (checked), in the order of the list:"), this);
  fields_label->setBuddy(fields_);
  auto* side = new QVBoxLayout;
  side->addWidget(up);
  side->addWidget(down);
  auto* width_label = new QLabel(tr("&Width:"), this);
  width_label->setBuddy(width_);
  side->addWidget(width_label);
  side->addWidget(width_);
  side->addStretch(1);
  side->addWidget(filter);
  side->addWidget(sort);
  auto* middle = new QHBoxLayout;
  middle->addWidget(fields_, 1);
  middle->addLayout(side);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &ViewEditorDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &ViewEditorDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(fields_label);
  layout->addLayout(middle, 1);
  layout->addWidget(buttons);
  fields_->setCurrentRow(0);
  resize(460, 420);
  GuardStoredTexts(this);
}

void ViewEditorDialog::CurrentChanged() {
  QListWidgetItem* item = fields_->currentItem();
  width_->setEnabled(item != nullptr);
  if (item) width_->setValue(item->data(kWidthRole).toInt());
}

void ViewEditorDialog::MoveCurrent(int step) {
  const int row = fields_->currentRow();
  const int to = row + step;
  if (row < 0 || to < 0 || to >= fields_->count()) return;
  QListWidgetItem* item = fields_->takeItem(row);
  fields_->insertItem(to, item);
  fields_->setCurrentRow(to);
}

void ViewEditorDialog::accept() {
  SetViewName(db_, view_, Utf8ToCp1252(name_->text().trimmed().toStdString()));
  // The listed fields in their new order take the places they held among themselves; fields
  // that are not columns keep theirs.
  std::vector<int> order = ViewFieldOrder(db_, view_);
  std::vector<int> listed;
  for (int i = 0; i < fields_->count(); ++i)
    listed.push_back(fields_->item(i)->data(kSlotRole).toInt());
  std::size_t next = 0;
  for (int& slot : order)
    if (slot < kFieldSlots && IsListType(db_.definition().field_type(slot)) && next < listed.size())
      slot = listed[next++];
  SetViewFieldOrder(db_, view_, order);
  for (int i = 0; i < fields_->count(); ++i) {
    QListWidgetItem* item = fields_->item(i);
    const int slot = item->data(kSlotRole).toInt();
    const bool shown = item->checkState() == Qt::Checked;
    unsigned stored = shown ? std::max(1u, StoredWidth(item->data(kWidthRole).toInt())) : 0;
    SetViewFieldWidth(db_, view_, slot, stored);
  }
  QDialog::accept();
}

void ViewEditorDialog::reject() {
  std::memcpy(db_.definition().view_block(view_), saved_.data(), kViewSize);
  db_.changed = db_changed_;
  QDialog::reject();
}

}  // namespace qv::app
