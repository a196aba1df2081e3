#pragma once
// "Edit Filters": six conditions, each enabled or not, on one field, with its text, limits,
// check-box state or pop-up value, a NOT and the "(" and ")" of a group, and AND/OR between
// consecutive conditions. Works on a copy; OK stores through the filter rule.

#include <QDialog>
#include <array>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"
#include "processing/filter_dialog.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace qv::app {

class FiltersDialog : public QDialog {
  Q_OBJECT
 public:
  // The controls of one condition.
  struct Row {
    QCheckBox* enabled = nullptr;
    QComboBox* field = nullptr;
    QStackedWidget* values = nullptr;
    QLineEdit* contains = nullptr;
    QLineEdit* lower = nullptr;
    QLineEdit* upper = nullptr;
    QLabel* hint = nullptr;
    QPushButton* pick_lower = nullptr;  // the calendar or clock beside a date or time limit
    QPushButton* pick_upper = nullptr;
    QCheckBox* checked = nullptr;
    QComboBox* popup = nullptr;
    QCheckBox* not_box = nullptr;
    QPushButton* open = nullptr;
    QPushButton* close = nullptr;
  };

  // `view` -1 edits the current filter, else that view's conditions.
  FiltersDialog(Database& db, int view, const FormatOptions& options, Prompter& prompter,
                QWidget* parent = nullptr);

  const Row& row(int i) const { return rows_[i]; }
  // The AND and OR buttons between conditions k+1 and k+2.
  QRadioButton* andButton(int k) const { return and_[k]; }
  QRadioButton* orButton(int k) const { return or_[k]; }
  // The controls as they stand.
  FilterDialogControls controls() const;

  void accept() override;

 private:
  QWidget* MakeRow(int i, const FilterConditionControls& start);
  QWidget* MakeJoin(int k, bool or_chosen);
  // Shows the value controls the row's field needs; with `defaults` fills the limit boxes.
  void FieldChosen(int i, bool defaults);
  void EnableRow(int i);
  // Opens the date or time chooser for a limit box of row i.
  void Pick(int i, QLineEdit* box);

  Database& db_;
  int view_;
  FormatOptions options_;
  Prompter& prompter_;
  std::array<Row, kConditions> rows_;
  std::array<QRadioButton*, kConditions - 1> and_{};
  std::array<QRadioButton*, kConditions - 1> or_{};
};

}  // namespace qv::app
