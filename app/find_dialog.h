#pragma once
// "Search Database": the search text, the field to search (or all fields), and the case and
// begins-with choices.

#include <QDialog>

#include "engine/database.h"
#include "processing/find.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace qv::app {

class FindDialog : public QDialog {
  Q_OBJECT
 public:
  FindDialog(const DatabaseDefinition& definition, const FindSettings& current,
             QWidget* parent = nullptr);
  // The settings as the controls stand; the text as stored (Windows-1252).
  FindSettings settings() const;

  QLineEdit* textBox() const { return text_; }
  QComboBox* fieldBox() const { return field_; }
  QCheckBox* caseBox() const { return case_; }
  QCheckBox* beginsBox() const { return begins_; }

 private:
  QLineEdit* text_;
  QComboBox* field_;
  QCheckBox* case_;
  QCheckBox* begins_;
};

}  // namespace qv::app
