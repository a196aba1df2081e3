#pragma once
// The pop-up list editor: the items of a Pop-Up field, added, renamed, deleted, moved and
// sorted. Items are at most 13 characters, as the values that store them.

#include <QDialog>
#include <string>
#include <vector>

class QListWidget;
class QPushButton;

namespace qv::app {

class PopupListEditor : public QDialog {
  Q_OBJECT
 public:
  // `items` in Windows-1252, as the field record holds them; empty items are left out.
  explicit PopupListEditor(const std::vector<std::string>& items, QWidget* parent = nullptr);
  std::vector<std::string> items() const;
  QListWidget* list() const { return list_; }

  void AddItem(const QString& text);
  void RenameCurrent(const QString& text);
  void DeleteCurrent();
  void MoveCurrent(int by);
  void SortItems();

 private:
  QString Ask(const QString& title, const QString& text);
  void UpdateButtons();
  QListWidget* list_;
  QPushButton* rename_;
  QPushButton* delete_;
  QPushButton* up_;
  QPushButton* down_;
};

}  // namespace qv::app
