#include "app/views_dialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/view_editor_dialog.h"
#include "engine/text.h"
#include "processing/views.h"

namespace qv::app {

ViewsDialog::ViewsDialog(Database& db, const FormatOptions& options, Prompter& prompter,
                         QWidget* parent)
    : QDialog(parent),
      db_(db),
      options_(options),
      prompter_(prompter),
      list_(new QListWidget(this)) {
  setWindowTitle(tr("Views"));
  // Opening the views page gives a database without views its "Default View".
  if (EnsureDefaultView(db_)) db_.changed = true;
  auto* add = new QPushButton(tr("&New View"), this);
  auto* copy = new QPushButton(tr("&Copy View"), this);
  auto* edit = new QPushButton(tr("&Edit View"), this);
  auto* remove = new QPushButton(tr("&Delete View"), this);
  connect(add, &QPushButton::clicked, this, [this] {
    if (auto v = NewView(db_, prompter_)) {
      db_.changed = true;
      Fill(*v);
      EditView(*v);
    }
  });
  connect(copy, &QPushButton::clicked, this, [this] {
    if (auto v = CopyView(db_, list_->currentRow())) {
      db_.changed = true;
      Fill(*v);
      EditView(*v);
    }
  });
  connect(edit, &QPushButton::clicked, this, [this] { EditView(list_->currentRow()); });
  connect(list_, &QListWidget::itemActivated, this, [this] { EditView(list_->currentRow()); });
  connect(remove, &QPushButton::clicked, this, [this] {
    int row = list_->currentRow();
    if (DeleteView(db_, row, prompter_)) {
      db_.changed = true;
      Fill(std::min(row, ViewCount(db_) - 1));
    }
  });
  // Enter in the list edits the chosen view; it must not make a new one.
  for (QPushButton* b : {add, copy, edit, remove}) b->setAutoDefault(false);
  auto* row_buttons = new QHBoxLayout;
  row_buttons->addWidget(add);
  row_buttons->addWidget(copy);
  row_buttons->addWidget(edit);
  row_buttons->addWidget(remove);
  auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(close, &QDialogButtonBox::rejected, this, &QDialog::accept);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_);
  layout->addLayout(row_buttons);
  layout->addWidget(close);
  Fill(0);
}

void ViewsDialog::EditView(int v) {
  if (v < 0 || v >= ViewCount(db_)) return;
  ViewEditorDialog editor(db_, v, options_, prompter_, this);
  if (editor.exec() != QDialog::Accepted) return;
  db_.changed = true;
  if (CurrentView(db_) == v) ApplyView(db_, v, prompter_);
  Fill(v);
}

void ViewsDialog::Fill(int select) {
  list_->clear();
  for (const std::string& name : ViewNames(db_))
    list_->addItem(QString::fromStdString(Cp1252ToUtf8(name)));
  list_->setCurrentRow(select);
}

}  // namespace qv::app
