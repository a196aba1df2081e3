#include "app/about_dialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
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
  // A fixed width lets the wrapped text ask for all the height it needs.
  text->setFixedWidth(300);
  auto* icon = new QLabel(this);
  icon->setPixmap(QIcon(":/icons/quorvant.png").pixmap(64, 64));
  icon->setAlignment(Qt::AlignTop);
  auto* words = new QVBoxLayout;
  words->addWidget(name);
  words->addWidget(text);
  auto* top = new QHBoxLayout;
  top->setSpacing(16);
  top->addWidget(icon);
  top->addLayout(words, 1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 12);
  layout->addLayout(top);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
}

}  // namespace qv::app
