#pragma once
// "Print Records": the current record or every record of the view, and the print command that
// will be used (a preference; changing it here changes it there).

#include <QDialog>
#include <string>

class QLineEdit;
class QRadioButton;

namespace qv::app {

class PrintDialog : public QDialog {
  Q_OBJECT
 public:
  PrintDialog(const std::string& command, QWidget* parent = nullptr);
  bool allRecords() const;
  std::string command() const;

 private:
  QRadioButton* current_;
  QRadioButton* view_;
  QLineEdit* command_;
};

}  // namespace qv::app
