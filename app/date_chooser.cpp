#include "app/date_chooser.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace qv::app {

DateChooser::DateChooser(const Dmy& current, QWidget* parent) : QDialog(parent), chosen_(current) {
  setWindowTitle(tr("Choose Date"));
  calendar_ = new QCalendarWidget(this);
  bool empty = current.year <= 1904 && current.month == 1 && current.day == 1;
  calendar_->setSelectedDate(empty ? QDate::currentDate() : QDate(current.year, current.month, current.day));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  QPushButton* none = buttons->addButton(tr("No Date"), QDialogButtonBox::ResetRole);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(calendar_);
  layout->addWidget(buttons);
  auto take = [this] {
    QDate d = calendar_->selectedDate();
    chosen_ = Dmy{d.day(), d.month(), d.year()};
    accept();
  };
  connect(calendar_, &QCalendarWidget::activated, this, take);
  connect(buttons, &QDialogButtonBox::accepted, this, take);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(none, &QPushButton::clicked, this, [this] {
    chosen_ = Dmy{};
    accept();
  });
}

}  // namespace qv::app
