#include "app/record_view_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QVBoxLayout>

#include "engine/text.h"

namespace qv::app {

RecordViewDialog::RecordViewDialog(const Database& db, std::uint32_t number,
                                   const FormatOptions& options, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(QString::fromStdString(
      StringPrintf("%s - Record %u of %u", Cp1252ToUtf8(db.name).c_str(), number + 1, db.count())));
  auto* body = new QWidget;
  auto* form = new QFormLayout(body);
  for (int slot : UsedFieldsInDisplayOrder(db.definition())) {
    ConstFieldDefinition field = db.definition().field(slot);
    if (field.type() == kHeading) {
      auto* heading = new QLabel(QString::fromStdString(Cp1252ToUtf8(field.name())), body);
      QFont bold = heading->font();
      bold.setBold(true);
      heading->setFont(bold);
      form->addRow(heading);
      continue;
    }
    QString label = QString::fromStdString(Cp1252ToUtf8(field.name())) + ":";
    QString value = QString::fromStdString(Cp1252ToUtf8(RecordValueText(db, number, slot, options)));
    if (field.type() == kNote) {
      auto* note = new QPlainTextEdit(value, body);
      note->setReadOnly(true);
      note->setMaximumHeight(90);
      form->addRow(label, note);
    } else {
      auto* line = new QLineEdit(value, body);
      line->setReadOnly(true);
      form->addRow(label, line);
    }
  }
  auto* scroll = new QScrollArea(this);
  scroll->setWidget(body);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(scroll, 1);
  layout->addWidget(buttons);
  resize(460, 420);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

}  // namespace qv::app
