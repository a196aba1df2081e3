#include "app/security_access_dialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace qv::app {

namespace {
QString Text(std::string_view s) {
  return QString::fromLatin1(s.data(), static_cast<int>(s.size()));
}
}  // namespace

SecurityAccessDialog::SecurityAccessDialog(const DatabaseDefinition& definition, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle("Security Access");
  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  for (int action = 0; action < kAccessActions; ++action) {
    auto* box = new QComboBox(this);
    const int values = action == kEditRecords ? 4 : 3;
    for (int v = 0; v < values; ++v) box->addItem(Text(AccessValueLabel(v)), v);
    int current = GetAccess(definition, action);
    // A value this row does not offer stays as it is unless the user picks another.
    if (box->findData(current) < 0) box->addItem(Text(AccessValueLabel(current)), current);
    box->setCurrentIndex(std::max(0, box->findData(current)));
    choices_[static_cast<std::size_t>(action)] = box;
    auto* label = new QLabel(Text(AccessActionLabel(action)) + ":", this);
    label->setBuddy(box);
    form->addRow(label, box);
    // The Delete Database row is present but hidden, as it always was.
    if (action == kDeleteDatabase) {
      label->hide();
      box->hide();
    }
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void SecurityAccessDialog::Store(DatabaseDefinition& definition) const {
  for (int action = 0; action < kAccessActions; ++action) {
    QComboBox* box = choices_[static_cast<std::size_t>(action)];
    if (box->currentIndex() >= 0) SetAccess(definition, action, box->currentData().toInt());
  }
}

}  // namespace qv::app
