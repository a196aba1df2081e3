#pragma once
// Defining a new database: its name and a list of fields by name and type. (The full database
// properties, with every field setting, replace it when they exist.)

#include <QDialog>

#include "engine/database.h"

class QComboBox;
class QLineEdit;
class QTableWidget;

namespace qv::app {

class NewDatabaseDialog : public QDialog {
  Q_OBJECT
 public:
  explicit NewDatabaseDialog(QWidget* parent = nullptr);
  // Adds a row; used by the Add button and by tests.
  void AddField(const QString& name, unsigned type);
  void SetDatabaseName(const QString& name);
  // Writes the name and fields into `db`; false, with the problem in `problem`, when the input
  // cannot make a database.
  bool Apply(Database& db, QString& problem) const;
  // With a target, OK applies the input to it and stays open on a problem.
  void setTarget(Database* db) { target_ = db; }

 private:
  void accept() override;
  QLineEdit* name_;
  QTableWidget* fields_;
  Database* target_ = nullptr;
};

}  // namespace qv::app
