#pragma once
// The password dialog: "Please enter your Password" above one hidden-text field.

#include <QDialog>

#include "platform/password_prompter.h"

class QLineEdit;

namespace qv::app {

class PasswordDialog : public QDialog {
  Q_OBJECT
 public:
  // Longest password the settings can hold (39 characters and the terminator).
  static constexpr int kMaxLength = 39;
  PasswordDialog(const QString& title, const QString& prompt, QWidget* parent = nullptr);
  QString text() const;
  QLineEdit* field() const { return field_; }

 private:
  QLineEdit* field_;
};

// Shows PasswordDialog for the security code's prompts.
class GuiPasswordPrompter : public PasswordPrompter {
 public:
  void setParent(QWidget* parent) { parent_ = parent; }
  std::optional<std::string> AskPassword(PasswordMode mode, std::string_view title,
                                         std::string_view prompt, int attempt) override;

 private:
  QWidget* parent_ = nullptr;
};

}  // namespace qv::app
