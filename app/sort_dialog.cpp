#include "app/sort_dialog.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/field_choices.h"
#include "processing/sort.h"
#include "processing/views.h"

namespace qv::app {

SortDialog::SortDialog(Database& db, int view, Prompter& prompter, QWidget* parent)
    : QDialog(parent), db_(db), view_(view), prompter_(prompter) {
  setWindowTitle(tr("Sorting"));
  const QString titles[kSortKeys] = {tr("&Primary Sort"), tr("&Secondary Sort"),
                                     tr("&Tertiary Sort")};
  const char* names[kSortKeys] = {"primary", "secondary", "tertiary"};
  auto* layout = new QVBoxLayout(this);
  for (int k = 0; k < kSortKeys; ++k) {
    SortKey key = view < 0 ? db.definition().sort_key(k) : ViewSortKey(db, view, k);
    auto* box = new QGroupBox(this);
    auto* label = new QLabel(titles[k], box);
    fields_[k] = new QComboBox(box);
    fields_[k]->setObjectName(names[k]);
    fields_[k]->addItem(tr("No Field"));
    AddFieldItems(fields_[k], db.definition());
    SelectSlot(fields_[k], key.field);
    fields_[k]->setMinimumContentsLength(18);
    label->setBuddy(fields_[k]);
    forward_[k] = new QRadioButton(tr("Forward"), box);
    reverse_[k] = new QRadioButton(tr("Reverse"), box);
    // Each pair is its own group, so the three pairs do not exclude one another.
    auto* pair = new QButtonGroup(box);
    pair->addButton(forward_[k]);
    pair->addButton(reverse_[k]);
    (key.forward ? forward_[k] : reverse_[k])->setChecked(true);
    auto* grid = new QGridLayout(box);
    grid->addWidget(label, 0, 0);
    grid->addWidget(fields_[k], 0, 1, 1, 2);
    grid->addWidget(forward_[k], 1, 1);
    grid->addWidget(reverse_[k], 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    layout->addWidget(box);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &SortDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
}

void SortDialog::accept() {
  SortDialogState state;
  for (int k = 0; k < kSortKeys; ++k) {
    state.field[k] = ChosenSlot(fields_[k]);
    state.forward[k] = forward_[k]->isChecked();
  }
  if (StoreSortDialog(db_, state, view_, prompter_)) QDialog::accept();
}

}  // namespace qv::app
