#include "app/about_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace qv::app {

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("About Quorvant"));
  auto* name = new QLabel("Quorvant 3.0", this);
  QFont big = name->font();
  big.setBold(true);
  big.setPointSizeF(big.pointSizeF() * 1.6);
  name->setFont(big);
  auto* text = new QLabel(tr("A personal database manager.\n\nReads and writes the handheld "
                             "editions' .PDB database files, so databases move freely between "
                             "the handheld and the desktop."),
                          this);
  text->setWordWrap(true);
  // A wrapped label needs a width to find its height; without one its last line is cut off.
  text->setMinimumWidth(320);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 12);
  layout->addWidget(name);
  layout->addWidget(text);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
}

}  // namespace qv::app
