#include "app/delete_records_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace qv::app {

DeleteRecordsDialog::DeleteRecordsDialog(QWidget* parent) : QDialog(parent) {
  setWindowTitle("Delete Records");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->addWidget(new QLabel(tr("Delete which Records:"), this));
  within_ = new QRadioButton(tr("All Records _Within_ Filter Range"), this);
  outside_ = new QRadioButton(tr("All Records _Outside_ Filter Range"), this);
  all_ = new QRadioButton(tr("All Records"), this);
  within_->setChecked(true);
  for (QRadioButton* b : {within_, outside_, all_}) layout->addWidget(b);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addSpacing(8);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

DeleteScope DeleteRecordsDialog::scope() const {
  if (outside_->isChecked()) return DeleteScope::OutsideFilter;
  if (all_->isChecked()) return DeleteScope::All;
  return DeleteScope::WithinFilter;
}

}  // namespace qv::app
