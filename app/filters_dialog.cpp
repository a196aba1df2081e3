#include "app/filters_dialog.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDate>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/date_chooser.h"
#include "app/field_choices.h"
#include "app/time_chooser.h"
#include "engine/format.h"
#include "engine/text.h"

namespace qv::app {

namespace {

// The pages of a row's value area.
enum Page { kNothing, kContains, kRange, kCheck, kPopup };

Page PageOf(unsigned type) {
  switch (type) {
    case kText:
    case kNote:
    case kDbPopup:
    case kConditional:
    case kLinked:
      return kContains;
    case kInteger:
    case kUnique:
    case kFloat:
    case kCalculated:
    case kDate:
    case kTime:
      return kRange;
    case kCheckBox:
      return kCheck;
    case kPopUp:
      return kPopup;
    default:
      return kNothing;
  }
}

QString Utf8(const std::string& stored) {
  return QString::fromStdString(Cp1252ToUtf8(stored));
}
std::string Stored(const QString& text) {
  return Utf8ToCp1252(text.toStdString());
}

}  // namespace

FiltersDialog::FiltersDialog(Database& db, int view, const FormatOptions& options,
                             Prompter& prompter, QWidget* parent)
    : QDialog(parent), db_(db), view_(view), options_(options), prompter_(prompter) {
  setWindowTitle(tr("Edit Filters"));
  const FilterDialogControls start = FilterControlsFromDatabase(db, options, view);
  auto* inner = new QWidget;
  auto* rows = new QVBoxLayout(inner);
  rows->setSpacing(2);
  for (int i = 0; i < kConditions; ++i) {
    if (i > 0) rows->addWidget(MakeJoin(i - 1, start.or_buttons[i - 1]));
    rows->addWidget(MakeRow(i, start.conditions[i]));
  }
  rows->addStretch(1);
  auto* scroll = new QScrollArea(this);
  scroll->setWidget(inner);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &FiltersDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(scroll, 1);
  layout->addWidget(buttons);

  // The condition being typed in is scrolled into view.
  connect(qApp, &QApplication::focusChanged, this, [scroll, inner](QWidget*, QWidget* now) {
    if (now && inner->isAncestorOf(now)) scroll->ensureWidgetVisible(now, 8, 24);
  });
  rows_[0].enabled->setFocus();

  // Taller than most screens with all six conditions: it scrolls, and fits the screen it is on.
  inner->adjustSize();
  int wanted = inner->sizeHint().height() + buttons->sizeHint().height() + 40;
  int room = 700;
  if (QScreen* screen = parent ? parent->screen() : this->screen())
    room = screen->availableGeometry().height() - 60;
  resize(inner->sizeHint().width() + 40, std::min(wanted, room));
}

QWidget* FiltersDialog::MakeRow(int i, const FilterConditionControls& start) {
  Row& r = rows_[i];
  auto* box = new QGroupBox;
  r.enabled = new QCheckBox(tr("Filter &%1 Enabled").arg(i + 1), box);
  r.enabled->setChecked(start.enabled);
  r.field = new QComboBox(box);
  r.field->addItem(tr("Select Field"));
  AddFieldItems(r.field, db_.definition());
  // A condition not in use shows no field, whatever its unused bytes say.
  SelectSlot(r.field, start.enabled ? start.field : -1);
  r.field->setMinimumContentsLength(16);
  r.not_box = new QCheckBox(tr("NOT"), box);
  r.not_box->setChecked(start.not_box);
  r.open = new QPushButton(tr("("), box);
  r.close = new QPushButton(tr(")"), box);
  for (QPushButton* b : {r.open, r.close}) {
    b->setCheckable(true);
    b->setAutoDefault(false);
    b->setFixedWidth(b->fontMetrics().horizontalAdvance("(") + 24);
  }
  r.open->setChecked(start.open_group);
  r.close->setChecked(start.close_group);
  r.open->setToolTip(tr("A group opens at this condition"));
  r.close->setToolTip(tr("A group closes before this condition"));

  r.values = new QStackedWidget(box);
  r.values->addWidget(new QLabel(tr("Every record passes a condition on this field."), box));
  auto* contains_page = new QWidget(box);
  r.contains = new QLineEdit(Utf8(start.must_contain), contains_page);
  r.contains->setMaxLength(39);
  auto* contains_form = new QHBoxLayout(contains_page);
  contains_form->setContentsMargins(0, 0, 0, 0);
  auto* contains_label = new QLabel(tr("Must Contain"), contains_page);
  contains_label->setBuddy(r.contains);
  contains_form->addWidget(contains_label);
  contains_form->addWidget(r.contains, 1);
  r.values->addWidget(contains_page);
  auto* range_page = new QWidget(box);
  r.lower = new QLineEdit(Utf8(start.lower), range_page);
  r.upper = new QLineEdit(Utf8(start.upper), range_page);
  r.hint = new QLabel(range_page);
  r.hint->setEnabled(false);
  r.pick_lower = new QPushButton(tr("..."), range_page);
  r.pick_upper = new QPushButton(tr("..."), range_page);
  for (QPushButton* b : {r.pick_lower, r.pick_upper}) {
    b->setAutoDefault(false);
    b->setFixedWidth(b->fontMetrics().horizontalAdvance("...") + 20);
  }
  connect(r.pick_lower, &QPushButton::clicked, this, [this, i] { Pick(i, rows_[i].lower); });
  connect(r.pick_upper, &QPushButton::clicked, this, [this, i] { Pick(i, rows_[i].upper); });
  auto* range = new QHBoxLayout(range_page);
  range->setContentsMargins(0, 0, 0, 0);
  range->addWidget(new QLabel(tr("Lower Limit"), range_page));
  range->addWidget(r.lower, 1);
  range->addWidget(r.pick_lower);
  range->addWidget(new QLabel(tr("Upper Limit"), range_page));
  range->addWidget(r.upper, 1);
  range->addWidget(r.pick_upper);
  range->addWidget(r.hint);
  r.values->addWidget(range_page);
  r.checked = new QCheckBox(tr("Checked"), box);
  r.checked->setChecked(start.checked);
  r.values->addWidget(r.checked);
  r.popup = new QComboBox(box);
  r.popup->addItem(tr("No Value"));
  r.values->addWidget(r.popup);

  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(8, 4, 8, 4);
  grid->addWidget(r.enabled, 0, 0);
  grid->addWidget(r.field, 0, 1);
  grid->addWidget(r.not_box, 0, 2);
  grid->addWidget(r.open, 0, 3);
  grid->addWidget(r.close, 0, 4);
  grid->addWidget(r.values, 1, 0, 1, 5);
  grid->setColumnStretch(1, 1);

  FieldChosen(i, false);
  if (start.field >= 0 && PageOf(db_.definition().field_type(start.field)) == kPopup) {
    int at = r.popup->findText(Utf8(start.must_contain));
    r.popup->setCurrentIndex(at >= 0 ? at : 0);
  }
  connect(r.field, QOverload<int>::of(&QComboBox::activated), this,
          [this, i] { FieldChosen(i, true); });
  connect(r.enabled, &QCheckBox::toggled, this, [this, i] { EnableRow(i); });
  EnableRow(i);
  return box;
}

QWidget* FiltersDialog::MakeJoin(int k, bool or_chosen) {
  auto* strip = new QWidget;
  and_[k] = new QRadioButton(tr("AND"), strip);
  or_[k] = new QRadioButton(tr("OR"), strip);
  auto* pair = new QButtonGroup(strip);
  pair->addButton(and_[k]);
  pair->addButton(or_[k]);
  (or_chosen ? or_[k] : and_[k])->setChecked(true);
  auto* line = new QHBoxLayout(strip);
  line->setContentsMargins(0, 0, 0, 0);
  line->addStretch(1);
  line->addWidget(and_[k]);
  line->addSpacing(16);
  line->addWidget(or_[k]);
  line->addStretch(1);
  return strip;
}

void FiltersDialog::FieldChosen(int i, bool defaults) {
  Row& r = rows_[i];
  const int slot = ChosenSlot(r.field);
  const unsigned type = db_.definition().field_type(slot);
  Page page = slot < 0 ? kNothing : PageOf(type);
  r.values->setCurrentIndex(page);
  r.values->setVisible(slot >= 0);
  if (page == kRange) {
    LimitDefaults d = FilterLimitDefaults(db_.definition().field(slot));
    r.lower->setMaxLength(d.max_chars);
    r.upper->setMaxLength(d.max_chars);
    if (defaults) {
      r.lower->setText(QString::fromStdString(d.lower));
      r.upper->setText(QString::fromStdString(d.upper));
    }
    const bool date = type == kDate, time = type == kTime;
    QString example = date   ? QString::fromStdString(options_.locale.short_date)
                      : time ? QString::fromStdString(options_.locale.time_format)
                             : QString();
    r.hint->setText(example);
    r.hint->setVisible(!example.isEmpty());
    r.pick_lower->setVisible(date || time);
    r.pick_upper->setVisible(date || time);
    r.pick_lower->setToolTip(date ? tr("Choose the date") : tr("Choose the time"));
    r.pick_upper->setToolTip(r.pick_lower->toolTip());
    r.lower->setPlaceholderText(date ? tr("first date") : time ? tr("earliest") : QString());
    r.upper->setPlaceholderText(date || time ? tr("no limit") : QString());
  }
  if (page == kPopup) {
    r.popup->clear();
    r.popup->addItem(tr("No Value"));
    for (const std::string& item : db_.schema.fields[static_cast<std::size_t>(slot)].texts)
      if (!item.empty()) r.popup->addItem(Utf8(item));
  }
  if (defaults && page == kContains) r.contains->clear();
}

void FiltersDialog::Pick(int i, QLineEdit* box) {
  const unsigned type = db_.definition().field_type(ChosenSlot(rows_[i].field));
  const std::string typed = Stored(box->text());
  if (type == kDate) {
    Dmy start = ParseDate(typed, options_.locale).value_or(Dmy{});
    if (start.year <= 1904) {
      QDate today = QDate::currentDate();
      start = Dmy{today.day(), today.month(), today.year()};
    }
    DateChooser chooser(start, this);
    if (chooser.exec() != QDialog::Accepted) return;
    Dmy d = chooser.date();
    box->setText(DmyToDateNumber(d) == 0
                     ? QString()
                     : Utf8(FormatDate(d.day, d.month, d.year, options_.locale)));
  } else if (type == kTime) {
    int hours = 0, minutes = 0;
    TimeOfDay start{0, 0, 0};
    if (ParseTime(typed, options_.time_code, hours, minutes) == 0) start = {hours, minutes, 0};
    TimeChooser chooser(start, this);
    if (chooser.exec() != QDialog::Accepted) return;
    TimeOfDay t = chooser.time();
    box->setText(t.hours == 255 ? QString()
                                : Utf8(FormatTime(t.hours, t.minutes, t.seconds, options_.locale)));
  }
}

void FiltersDialog::EnableRow(int i) {
  Row& r = rows_[i];
  const bool on = r.enabled->isChecked();
  for (QWidget* w : std::initializer_list<QWidget*>{r.field, r.values, r.not_box, r.open, r.close})
    w->setEnabled(on);
}

FilterDialogControls FiltersDialog::controls() const {
  FilterDialogControls c;
  for (int i = 0; i < kConditions; ++i) {
    const Row& r = rows_[i];
    FilterConditionControls& k = c.conditions[i];
    k.enabled = r.enabled->isChecked();
    k.field = ChosenSlot(r.field);
    const unsigned type = db_.definition().field_type(k.field);
    k.must_contain =
        PageOf(type) == kPopup
            ? (r.popup->currentIndex() > 0 ? Stored(r.popup->currentText()) : "No Value")
            : Stored(r.contains->text());
    k.lower = Stored(r.lower->text());
    k.upper = Stored(r.upper->text());
    k.checked = r.checked->isChecked();
    k.not_box = r.not_box->isChecked();
    k.open_group = r.open->isChecked();
    k.close_group = r.close->isChecked();
  }
  for (int k = 0; k < kConditions - 1; ++k) c.or_buttons[k] = or_[k]->isChecked();
  return c;
}

void FiltersDialog::accept() {
  std::string problem;
  // Rebuilding the list of a large database takes a moment.
  prompter_.busy(true);
  const bool stored = StoreFilterDialog(db_, controls(), options_, problem, view_);
  prompter_.busy(false);
  if (!stored) {
    prompter_.message(problem, "Error", Icon::Exclamation);
    return;
  }
  QDialog::accept();
}

}  // namespace qv::app
