#pragma once
// "Delete Records": which records go.

#include <QDialog>

#include "app/delete_records.h"

class QRadioButton;

namespace qv::app {

class DeleteRecordsDialog : public QDialog {
  Q_OBJECT
 public:
  explicit DeleteRecordsDialog(QWidget* parent = nullptr);
  DeleteScope scope() const;

 private:
  QRadioButton* within_;
  QRadioButton* outside_;
  QRadioButton* all_;
};

}  // namespace qv::app
