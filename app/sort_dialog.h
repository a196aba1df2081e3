#pragma once
// "Sorting": three keys, each a field ("No Field" first) and a Forward/Reverse pair. OK stores
// the keys into the current settings or into a view; a field that cannot be sorted keeps the
// dialog open.

#include <QDialog>
#include <array>

#include "engine/database.h"
#include "platform/prompter.h"

class QComboBox;
class QRadioButton;

namespace qv::app {

class SortDialog : public QDialog {
  Q_OBJECT
 public:
  // `view` -1 edits the current settings, else that view's keys.
  SortDialog(Database& db, int view, Prompter& prompter, QWidget* parent = nullptr);

  QComboBox* keyBox(int k) const { return fields_[k]; }
  QRadioButton* forwardButton(int k) const { return forward_[k]; }
  QRadioButton* reverseButton(int k) const { return reverse_[k]; }

  void accept() override;

 private:
  Database& db_;
  int view_;
  Prompter& prompter_;
  std::array<QComboBox*, kSortKeys> fields_{};
  std::array<QRadioButton*, kSortKeys> forward_{};
  std::array<QRadioButton*, kSortKeys> reverse_{};
};

}  // namespace qv::app
