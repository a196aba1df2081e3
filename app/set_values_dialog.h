#pragma once
// "Set Value of: <field>": the one value every record in the list takes, entered the way the
// field needs it (typed text, a pop-up item, a check box, a date or a time).

#include <QDialog>
#include <optional>

#include "engine/database.h"
#include "platform/locale.h"
#include "platform/prompter.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QTimeEdit;

namespace qv::app {

class SetValuesDialog : public QDialog {
  Q_OBJECT
 public:
  // Whether values of this field type can be set for all records at once.
  static bool Settable(unsigned type);

  SetValuesDialog(const Database& db, int slot, const FormatOptions& options, Prompter& prompter,
                  QWidget* parent = nullptr);
  // The stored value bytes once accepted.
  const std::optional<Bytes>& value() const { return value_; }

  QLineEdit* textBox() const { return text_; }
  QComboBox* popupBox() const { return popup_; }
  QCheckBox* checkBox() const { return check_; }
  QDateEdit* dateBox() const { return date_; }
  QTimeEdit* timeBox() const { return time_; }
  QCheckBox* emptyBox() const { return empty_; }

  void accept() override;

 private:
  std::optional<Bytes> Read() const;

  const Database& db_;
  int slot_;
  FormatOptions options_;
  Prompter& prompter_;
  QLineEdit* text_ = nullptr;
  QComboBox* popup_ = nullptr;
  QCheckBox* check_ = nullptr;
  QDateEdit* date_ = nullptr;
  QTimeEdit* time_ = nullptr;
  QCheckBox* empty_ = nullptr;  // "No Date" / "No Time"
  std::optional<Bytes> value_;
};

}  // namespace qv::app
