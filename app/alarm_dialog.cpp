#include "app/alarm_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "engine/text.h"

namespace qv::app {

namespace {
QString Wide(const std::string& cp1252) {
  return QString::fromStdString(Cp1252ToUtf8(cp1252));
}
}  // namespace

AlarmDialog::AlarmDialog(const AlarmReminder& reminder, QWidget* parent) : QDialog(parent) {
  setWindowTitle("Alarm");
  auto* icon = new QLabel(this);
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(48, 48));
  icon->setAlignment(Qt::AlignTop);
  auto* title = new QLabel("Quorvant Alarm Reminder", this);
  QFont bold = title->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.2);
  title->setFont(bold);
  auto* form = new QFormLayout;
  form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  auto* database = new QLabel(Wide(reminder.database_name), this);
  database->setTextInteractionFlags(Qt::TextSelectableByMouse);
  form->addRow("Database:", database);
  for (int i = 0; i < 2; ++i) {
    boxes_[i] = new QLineEdit(Wide(reminder.field_texts[i]), this);
    boxes_[i]->setReadOnly(true);
    boxes_[i]->setMinimumWidth(280);
    boxes_[i]->setCursorPosition(0);
    const QString name =
        reminder.field_names[i].empty() ? QString() : Wide(reminder.field_names[i]) + ":";
    form->addRow(name, boxes_[i]);
    // A field the settings leave unchosen takes no row.
    const bool chosen = !reminder.field_names[i].empty();
    boxes_[i]->setVisible(chosen);
    if (QWidget* label = form->labelForField(boxes_[i])) label->setVisible(chosen);
  }
  ok_ = new QPushButton(tr("OK"), this);
  goto_ = new QPushButton("&Goto Record", this);
  snooze_ = new QPushButton("&Snooze", this);
  ok_->setDefault(true);
  ok_->setToolTip(tr("Clear the alarm"));
  goto_->setToolTip(tr("Clear the alarm and open the record"));
  snooze_->setToolTip(tr("Remind again after the database's snooze time"));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  for (QPushButton* b : {ok_, goto_, snooze_}) buttons->addWidget(b);
  auto* text = new QVBoxLayout;
  text->addWidget(title);
  text->addSpacing(6);
  text->addLayout(form);
  auto* top = new QHBoxLayout;
  top->addWidget(icon);
  top->addSpacing(8);
  top->addLayout(text, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addSpacing(8);
  layout->addLayout(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(ok_, &QPushButton::clicked, this, [this] { Choose(AlarmChoice::Ok); });
  connect(goto_, &QPushButton::clicked, this, [this] { Choose(AlarmChoice::GotoRecord); });
  connect(snooze_, &QPushButton::clicked, this, [this] { Choose(AlarmChoice::Snooze); });
  setTabOrder(ok_, goto_);
  setTabOrder(goto_, snooze_);
  ok_->setFocus();
}

void AlarmDialog::Choose(AlarmChoice choice) {
  choice_ = choice;
  accept();
}

}  // namespace qv::app
