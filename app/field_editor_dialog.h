#pragma once
// The field editor: a field's name, type, length, list column and encryption, and the settings
// of its type (pop-up list, default value, first unique number, formula and result kind,
// conditional test, linked database and the fields it goes by, plug-in). OK makes the changes
// through the core's schema operations on the database it was given (a working copy in the
// properties); values that a change cannot keep are named and the user is asked first.

#include <QDialog>

#include "engine/field_settings.h"
#include "engine/workspace.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QSpinBox;
class QStackedWidget;

namespace qv::app {

class LinkSettingsPage;

class FieldEditorDialog : public QDialog {
  Q_OBJECT
 public:
  // `slot` -1 makes a new field.
  FieldEditorDialog(Workspace& workspace, Database& db, int slot, QWidget* parent = nullptr);
  // The edited (or new) field's slot after OK.
  int slot() const { return slot_; }
  void accept() override;

  QLineEdit* nameEdit() const { return name_; }
  QComboBox* typeBox() const { return type_; }
  QSpinBox* lengthBox() const { return length_; }
  QLineEdit* defaultEdit() const { return default_; }
  QLineEdit* formulaEdit() const { return formula_; }
  QComboBox* resultKindBox() const { return result_kind_; }
  QLineEdit* targetEdit() const;
  LinkSettingsPage* linkPage() const { return link_page_; }
  QLineEdit* pluginEdit() const { return plugin_; }
  const PluginSettings& pluginSettings() const { return plugin_settings_; }
  // The pop-up items as the editor will store them (Windows-1252).
  std::vector<std::string>& popupItems() { return items_; }
  void SelectType(unsigned type);

 private:
  QWidget* BuildGeneral();
  QWidget* BuildSettings();
  QWidget* DefaultPage();
  QWidget* PopupPage();
  QWidget* UniquePage();
  QWidget* CalculatedPage();
  QWidget* ConditionalPage();
  QWidget* TargetPage();
  QWidget* PluginPage();
  void ConfigurePlugin();
  QWidget* EmptyPage();
  void Load();
  void TypeChanged();
  void FillItems();
  bool Apply(Database& db);
  bool ApplySettings(Database& db, int slot, unsigned type);
  QComboBox* FieldChooser(const QString& none);
  unsigned chosenType() const;

  Workspace& workspace_;
  Database& db_;
  int slot_;
  std::vector<std::string> items_;
  QLineEdit* name_;
  QComboBox* type_;
  QSpinBox* length_;
  QCheckBox* shown_;
  QSpinBox* width_;
  QCheckBox* encrypted_;
  QStackedWidget* pages_;
  QGroupBox* settings_box_;
  // Default value (with Float decimals) and pop-up list.
  QLineEdit* default_ = nullptr;
  QLineEdit* popup_default_ = nullptr;
  QSpinBox* decimals_ = nullptr;
  QLabel* decimals_label_ = nullptr;
  QListWidget* items_list_ = nullptr;
  QCheckBox* sort_popups_ = nullptr;
  QSpinBox* unique_start_ = nullptr;
  QLineEdit* formula_ = nullptr;
  QComboBox* insert_field_ = nullptr;
  QComboBox* result_kind_ = nullptr;
  QLabel* program_ = nullptr;
  QComboBox* test_field_ = nullptr;
  QComboBox* test_op_ = nullptr;
  QLineEdit* test_value_ = nullptr;
  QComboBox* then_field_ = nullptr;
  QLineEdit* then_text_ = nullptr;
  QComboBox* else_field_ = nullptr;
  QLineEdit* else_text_ = nullptr;
  LinkSettingsPage* link_page_ = nullptr;
  QLineEdit* plugin_ = nullptr;
  PluginSettings plugin_settings_;  // what the plug-in's configuration set, stored on OK
  std::map<int, int> page_of_type_;
};

}  // namespace qv::app
