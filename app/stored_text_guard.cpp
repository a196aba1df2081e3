#include "app/stored_text_guard.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QTextCursor>
#include <QValidator>
#include <algorithm>
#include <memory>

#include "engine/text.h"

namespace qv::app {

namespace {

class StorableTextValidator : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int&) const override {
    if (StorableText(input)) return Acceptable;
    QApplication::beep();
    return Invalid;
  }
};

// A plain-text editor has no validator: an edit that brings in such a letter is taken back to
// the last text that could be stored.
void Guard(QPlainTextEdit* edit) {
  auto good = std::make_shared<QString>(edit->toPlainText());
  QObject::connect(edit, &QPlainTextEdit::textChanged, edit, [edit, good] {
    const QString now = edit->toPlainText();
    if (StorableText(now)) {
      *good = now;
      return;
    }
    QApplication::beep();
    const int at = std::min<int>(edit->textCursor().position(), static_cast<int>(good->size()));
    QSignalBlocker quiet(edit);
    edit->setPlainText(*good);
    QTextCursor cursor = edit->textCursor();
    cursor.setPosition(at);
    edit->setTextCursor(cursor);
  });
}

}  // namespace

bool StorableText(const QString& text) {
  return Utf8ToStored(text.toStdString()).exact;
}

void GuardStoredTexts(QWidget* root) {
  for (QLineEdit* edit : root->findChildren<QLineEdit*>())
    if (!edit->validator() && !edit->isReadOnly())
      edit->setValidator(new StorableTextValidator(edit));
  for (QPlainTextEdit* edit : root->findChildren<QPlainTextEdit*>())
    if (!edit->isReadOnly()) Guard(edit);
}

}  // namespace qv::app
