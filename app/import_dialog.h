#pragma once
// "Import CSV": the file, its separator, encoding and header line, and a preview of the first
// rows under the fields they go into.

#include <QDialog>
#include <string>

#include "engine/database.h"
#include "engine/workspace.h"
#include "processing/csv_import.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace qv::app {

struct ImportRequest {
  std::string path;  // UTF-8
  CsvImportOptions options;
};

class ImportDialog : public QDialog {
  Q_OBJECT
 public:
  // Rows shown in the preview.
  static constexpr int kPreviewRows = 8;

  ImportDialog(const Database& db, const Preferences& preferences, const std::string& path,
               QWidget* parent = nullptr);
  ImportRequest request() const;

  QLineEdit* pathBox() const { return path_; }
  QComboBox* separatorBox() const { return separator_; }
  QComboBox* encodingBox() const { return encoding_; }
  QComboBox* headerBox() const { return header_; }
  QTableWidget* preview() const { return preview_; }
  QLabel* mapping() const { return mapping_; }

  // Reads the file again and fills the preview.
  void UpdatePreview();
  void accept() override;

 private:
  void Browse();

  const Database& db_;
  QLineEdit* path_;
  QComboBox* separator_;
  QComboBox* encoding_;
  QComboBox* header_;
  QTableWidget* preview_;
  QLabel* mapping_;
  QPushButton* import_ = nullptr;
  bool mapped_ = false;
};

}  // namespace qv::app
