#include "app/password_dialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QVBoxLayout>

#include "security/password_text.h"

namespace qv::app {

PasswordDialog::PasswordDialog(const QString& title, const QString& prompt, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(title);
  field_ = new QLineEdit(this);
  field_->setEchoMode(QLineEdit::Password);
  field_->setMaxLength(kMaxLength);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->addWidget(new QLabel(prompt, this));
  layout->addWidget(field_);
  layout->addWidget(buttons);
  setMinimumWidth(320);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QString PasswordDialog::text() const {
  return field_->text();
}

std::optional<std::string> GuiPasswordPrompter::AskPassword(PasswordMode, std::string_view title,
                                                            std::string_view prompt, int) {
  PasswordDialog dialog(QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())),
                        QString::fromUtf8(prompt.data(), static_cast<qsizetype>(prompt.size())),
                        parent_);
  // The prompt must be answerable while an open shows the wait cursor.
  bool busy = QApplication::overrideCursor() != nullptr;
  if (busy) QApplication::setOverrideCursor(Qt::ArrowCursor);
  std::optional<std::string> password;
  // Passwords are kept as 8-bit text, as the files hold them; one the character set cannot hold
  // exactly is asked for again, never altered.
  while (!password && dialog.exec() == QDialog::Accepted) {
    std::string problem;
    password = PasswordFromUtf8(dialog.text().toStdString(), problem);
    if (!password)
      QMessageBox::warning(&dialog, dialog.windowTitle(), QString::fromStdString(problem));
  }
  if (busy) QApplication::restoreOverrideCursor();
  return password;
}

}  // namespace qv::app
