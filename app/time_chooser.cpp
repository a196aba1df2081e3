#include "app/time_chooser.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimeEdit>
#include <QVBoxLayout>

namespace qv::app {

TimeChooser::TimeChooser(const TimeOfDay& current, QWidget* parent) : QDialog(parent), chosen_(current) {
  setWindowTitle(tr("Choose Time"));
  edit_ = new QTimeEdit(this);
  edit_->setDisplayFormat("HH:mm:ss");
  edit_->setTime(current.hours < 24 ? QTime(current.hours, current.minutes % 60, current.seconds % 60)
                                    : QTime::currentTime());
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  QPushButton* none = buttons->addButton(tr("No Time"), QDialogButtonBox::ResetRole);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(edit_);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    QTime t = edit_->time();
    chosen_ = TimeOfDay{t.hour(), t.minute(), t.second()};
    accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(none, &QPushButton::clicked, this, [this] {
    chosen_ = TimeOfDay{255, 0, 0};
    accept();
  });
}

}  // namespace qv::app
