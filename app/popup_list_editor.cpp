#include "app/popup_list_editor.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/stored_text_guard.h"
#include "engine/text.h"

namespace qv::app {

namespace {
constexpr int kItemLength = 13;
}

PopupListEditor::PopupListEditor(const std::vector<std::string>& items, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(tr("Edit Popups"));
  list_ = new QListWidget(this);
  for (const std::string& t : items)
    if (!t.empty()) list_->addItem(QString::fromStdString(Cp1252ToUtf8(t)));
  auto* add = new QPushButton(tr("&Add..."), this);
  rename_ = new QPushButton(tr("&Rename..."), this);
  delete_ = new QPushButton(tr("&Delete"), this);
  up_ = new QPushButton(tr("Move &Up"), this);
  down_ = new QPushButton(tr("Move Do&wn"), this);
  auto* sort = new QPushButton(tr("&Sort Popups"), this);
  auto* side = new QVBoxLayout;
  for (QPushButton* b : {add, rename_, delete_, up_, down_, sort}) {
    b->setAutoDefault(false);
    side->addWidget(b);
  }
  side->addStretch(1);
  auto* row = new QHBoxLayout;
  row->addWidget(list_, 1);
  row->addLayout(side);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(row, 1);
  layout->addWidget(buttons);
  resize(380, 320);
  connect(add, &QPushButton::clicked, this, [this] {
    QString text = Ask(tr("Add Item"), QString());
    if (!text.isEmpty()) AddItem(text);
  });
  connect(rename_, &QPushButton::clicked, this, [this] {
    if (!list_->currentItem()) return;
    QString text = Ask(tr("Rename Item"), list_->currentItem()->text());
    if (!text.isEmpty()) RenameCurrent(text);
  });
  connect(list_, &QListWidget::itemActivated, rename_, &QPushButton::click);
  connect(delete_, &QPushButton::clicked, this, &PopupListEditor::DeleteCurrent);
  connect(up_, &QPushButton::clicked, this, [this] { MoveCurrent(-1); });
  connect(down_, &QPushButton::clicked, this, [this] { MoveCurrent(1); });
  connect(sort, &QPushButton::clicked, this, &PopupListEditor::SortItems);
  connect(list_, &QListWidget::currentRowChanged, this, &PopupListEditor::UpdateButtons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  if (list_->count() > 0) list_->setCurrentRow(0);
  UpdateButtons();
  GuardStoredTexts(this);
}

QString PopupListEditor::Ask(const QString& title, const QString& text) {
  QInputDialog dialog(this);
  dialog.setWindowTitle(title);
  dialog.setLabelText(tr("Item (at most %1 characters):").arg(kItemLength));
  dialog.setTextValue(text);
  if (auto* edit = dialog.findChild<QLineEdit*>()) edit->setMaxLength(kItemLength);
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.textValue().trimmed();
}

void PopupListEditor::AddItem(const QString& text) {
  QString item = text.left(kItemLength);
  if (item.isEmpty()) return;
  if (!list_->findItems(item, Qt::MatchFixedString).isEmpty()) {
    QMessageBox::information(this, windowTitle(), tr("The list holds \"%1\" already.").arg(item));
    return;
  }
  int row = list_->currentRow() + 1;
  list_->insertItem(row, item);
  list_->setCurrentRow(row);
}

void PopupListEditor::RenameCurrent(const QString& text) {
  if (QListWidgetItem* item = list_->currentItem()) item->setText(text.left(kItemLength));
}

void PopupListEditor::DeleteCurrent() {
  int row = list_->currentRow();
  if (row < 0) return;
  delete list_->takeItem(row);
  list_->setCurrentRow(std::min(row, list_->count() - 1));
  UpdateButtons();
}

void PopupListEditor::MoveCurrent(int by) {
  int row = list_->currentRow();
  int to = row + by;
  if (row < 0 || to < 0 || to >= list_->count()) return;
  list_->insertItem(to, list_->takeItem(row));
  list_->setCurrentRow(to);
}

void PopupListEditor::SortItems() {
  QString current = list_->currentItem() ? list_->currentItem()->text() : QString();
  list_->sortItems();
  auto found = list_->findItems(current, Qt::MatchExactly);
  if (!found.isEmpty()) list_->setCurrentItem(found.first());
}

void PopupListEditor::UpdateButtons() {
  int row = list_->currentRow();
  rename_->setEnabled(row >= 0);
  delete_->setEnabled(row >= 0);
  up_->setEnabled(row > 0);
  down_->setEnabled(row >= 0 && row + 1 < list_->count());
}

std::vector<std::string> PopupListEditor::items() const {
  std::vector<std::string> out;
  for (int i = 0; i < list_->count(); ++i)
    out.push_back(Utf8ToCp1252(list_->item(i)->text().toStdString()));
  return out;
}

}  // namespace qv::app
