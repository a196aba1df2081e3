#pragma once
// The report of one field, shown in a fixed-pitch font, with a way to save it as text.

#include <QDialog>
#include <string>

class QPlainTextEdit;

namespace qv::app {

class ReportDialog : public QDialog {
  Q_OBJECT
 public:
  // `text` is the report as the core makes it (lines ending in CR LF), UTF-8.
  ReportDialog(const std::string& text, QWidget* parent = nullptr);
  // The text as shown.
  QString shownText() const;

 private:
  void Save();
  std::string text_;
  QPlainTextEdit* view_;
};

}  // namespace qv::app
