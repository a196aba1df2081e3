#pragma once
// "Export Records": the format (CSV, JSON or plain text), its options and the file.

#include <QDialog>
#include <string>

#include "engine/database.h"
#include "engine/workspace.h"
#include "processing/csv_export.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QRadioButton;

namespace qv::app {

struct ExportRequest {
  enum Format { Csv, Json, Text } format = Csv;
  CsvExportOptions csv;           // separator, encoding, header, quoting, order, filtered only
  bool text_all_filtered = true;  // Text: every record that passes the filter, or the current one
  std::string path;               // UTF-8
};

class ExportDialog : public QDialog {
  Q_OBJECT
 public:
  // Starts from the program-wide separator and quoting, and proposes `proposed` as the file.
  ExportDialog(const Preferences& preferences, const std::string& proposed,
               QWidget* parent = nullptr);
  ExportRequest request() const;

  QRadioButton* formatButton(ExportRequest::Format f) const { return formats_[f]; }
  QCheckBox* headerBox() const { return header_; }
  QCheckBox* quoteAllBox() const { return quote_all_; }
  QCheckBox* filteredBox() const { return filtered_; }
  QComboBox* orderBox() const { return order_; }
  QComboBox* separatorBox() const { return separator_; }
  QComboBox* encodingBox() const { return encoding_; }
  QComboBox* textScopeBox() const { return text_scope_; }
  QLineEdit* pathBox() const { return path_; }

  void accept() override;

 private:
  void FormatChanged();
  void Browse();

  QRadioButton* formats_[3] = {};
  QGroupBox* csv_box_;
  QCheckBox* header_;
  QCheckBox* quote_all_;
  QCheckBox* filtered_;
  QComboBox* order_;
  QComboBox* separator_;
  QComboBox* encoding_;
  QComboBox* text_scope_;
  QLineEdit* path_;
};

// The separators offered for CSV files, as (label, character).
QComboBox* MakeSeparatorBox(char current, QWidget* parent);
char ChosenSeparator(const QComboBox* box);
QComboBox* MakeEncodingBox(QWidget* parent);
TextEncoding ChosenEncoding(const QComboBox* box);

}  // namespace qv::app
