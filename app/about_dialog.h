#pragma once
#include <QDialog>

namespace qv::app {

// The About box: the program's name, version and purpose.
class AboutDialog : public QDialog {
  Q_OBJECT
 public:
  explicit AboutDialog(QWidget* parent = nullptr);
};

}  // namespace qv::app
