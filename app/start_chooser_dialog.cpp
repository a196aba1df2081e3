#include "app/start_chooser_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/list_font.h"

namespace qv::app {

StartChooserDialog::StartChooserDialog(const std::vector<RecentEntry>& entries, QWidget* parent)
    : QDialog(parent), entries_(entries) {
  setWindowTitle("Quorvant");
  auto* select = new QLabel(tr("Select an option"), this);
  QFont heading = select->font();
  heading.setBold(true);
  heading.setPointSizeF(heading.pointSizeF() * 1.15);
  select->setFont(heading);
  auto* create = new QPushButton(tr("Create a new database"), this);
  create->setAutoDefault(false);
  auto* orLabel = new QLabel(tr("Or"), this);
  auto* openLabel = new QLabel(tr("Open an existing file"), this);
  list_ = new QListWidget(this);
  list_->setFont(BoldListFont(list_->font()));
  list_->setSpacing(2);
  list_->addItem(tr("More files..."));
  for (const RecentEntry& e : entries_) list_->addItem(QString::fromStdString(e.name));
  list_->setCurrentRow(0);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->addWidget(select);
  layout->addSpacing(6);
  layout->addWidget(create);
  layout->addSpacing(6);
  layout->addWidget(orLabel, 0, Qt::AlignHCenter);
  layout->addSpacing(6);
  layout->addWidget(openLabel);
  layout->addWidget(list_, 1);
  layout->addWidget(buttons);
  resize(380, 360);

  connect(create, &QPushButton::clicked, this, [this] {
    choice_.kind = StartChoice::CreateNew;
    accept();
  });
  connect(list_, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { Choose(list_->row(item)); });
  connect(buttons, &QDialogButtonBox::accepted, this, [this] { Choose(list_->currentRow()); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void StartChooserDialog::Choose(int row) {
  if (row < 0 || row > static_cast<int>(entries_.size())) return;
  if (row == 0) {
    choice_.kind = StartChoice::MoreFiles;
  } else {
    choice_.kind = StartChoice::Recent;
    choice_.recent_index = entries_[static_cast<std::size_t>(row - 1)].index;
  }
  accept();
}

}  // namespace qv::app
