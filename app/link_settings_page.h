#pragma once
// The field editor's page for fields that reach another database (Link, Linked, DB Popup,
// Relationship): the other database's name and the fields the link goes by - the other
// database's field (shown by a DB Popup, matched by a Link or a Relationship), a Relationship's
// own key field and a DB Popup's pairing group. The other database's fields are offered in a
// list when it is found in this database's folder and opens without a password; otherwise its
// field is typed by name or number.

#include <QString>
#include <QWidget>
#include <memory>
#include <string>

#include "engine/database.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;
class QStackedWidget;

namespace qv::app {

class LinkSettingsPage : public QWidget {
  Q_OBJECT
 public:
  // `db` holds the field (its folder is searched for the other database); `slot` -1 for a new
  // field.
  LinkSettingsPage(const Database& db, int slot, QWidget* parent = nullptr);
  ~LinkSettingsPage() override;
  // Shows the stored settings of the field; a setting the user leaves alone keeps its byte.
  void Load(ConstFieldDefinition field);
  // Shows the rows a field of `type` uses.
  void SetType(unsigned type);
  // Writes the settings into `field`, of type `type`. The problem (UTF-8) when a typed field
  // names none; nothing is written then.
  std::string Apply(FieldDefinition field, unsigned type) const;

  QLineEdit* targetEdit() const { return target_; }
  QComboBox* otherFieldBox() const { return other_box_; }
  QLineEdit* otherFieldEdit() const { return other_edit_; }
  QComboBox* keyFieldBox() const { return key_box_; }
  QSpinBox* pairBox() const { return pair_; }
  // Whether the other database's fields are offered in a list.
  bool offersOtherFields() const { return offered_; }

 private:
  void FillKeyFields();
  void LookUp();
  void Refill();
  void ShowRow(QWidget* field, bool shown);
  void ShowRows();
  void ShowStatus();
  std::string OtherFieldOf(std::uint8_t& byte) const;

  const Database& db_;
  int slot_;
  unsigned type_ = kLink;
  // The stored bytes 56 and 65: what a setting left alone keeps.
  std::uint8_t source_ = 0, other_ = 0;
  bool loaded_ = false;  // an existing field's settings were shown
  QString looked_up_;    // the name the other database was looked for by, and its file's name
  QString file_name_;
  std::unique_ptr<Database> other_db_;  // the other database's schema, when it could be read
  bool offered_ = false;                // and it opens without a password
  QFormLayout* form_;
  QLineEdit* target_;
  QLabel* other_label_;
  QStackedWidget* other_stack_;
  QComboBox* other_box_;
  QLineEdit* other_edit_;
  QComboBox* key_box_;
  QSpinBox* pair_;
  QLabel* about_;
  QLabel* status_;
};

}  // namespace qv::app
