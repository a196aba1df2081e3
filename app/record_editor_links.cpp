// The record editor's Link and Linked fields: opening the linked records and reassigning a
// record to another parent.

#include <QInputDialog>

#include "app/field_controls.h"
#include "app/link_controls.h"
#include "app/linked_navigation.h"
#include "app/record_editor_dialog.h"
#include "engine/format.h"
#include "engine/text.h"

namespace qv::app {

namespace {

// The parent records the user may choose from, by their look-up field, in list order.
std::optional<std::uint32_t> ChooseParentRecord(QWidget* parent, const Database& db,
                                                const FormatOptions& options) {
  QStringList items;
  std::vector<std::uint32_t> numbers;
  const int lookup = db.definition().lookup_field();
  for (std::uint32_t n : db.visible) {
    if (n >= db.count()) continue;
    QString text = QString::fromStdString(Cp1252ToUtf8(RecordValueText(db, n, lookup, options)));
    items << QString("%1. %2").arg(items.size() + 1).arg(text);
    numbers.push_back(n);
  }
  if (items.isEmpty()) return std::nullopt;
  bool ok = false;
  QString chosen = QInputDialog::getItem(parent, QObject::tr("Reassign"),
                                         QObject::tr("The record of %1 this record belongs to:")
                                             .arg(QString::fromStdString(Cp1252ToUtf8(db.name))),
                                         items, 0, false, &ok);
  if (!ok) return std::nullopt;
  int at = static_cast<int>(items.indexOf(chosen));
  return at < 0 ? std::nullopt
                : std::optional<std::uint32_t>(numbers[static_cast<std::size_t>(at)]);
}

}  // namespace

void RecordEditorDialog::LinkRequested(int slot) {
  const unsigned type = db_.definition().field_type(slot);
  if (type == kDbPopup) {
    // The paired DB Popup fields take their values from the same record.
    auto picked = PickedRecord(control(slot));
    auto other = picked ? ReadLinkedQuietly(db_, slot) : nullptr;
    if (!other) return;
    RecordValues values;
    FillDbPopups(db_, slot, *other, *picked, workspace_.options, values);
    for (int s = 0; s < kFieldSlots; ++s)
      if (s != slot && values.present[static_cast<std::size_t>(s)] && control(s))
        control(s)->Load(values.values[static_cast<std::size_t>(s)]);
    dirty_ = true;
    return;
  }
  if (type == kLinked) {
    if (view_only_) return;
    if (number_ != kNewRecord) db_.current = number_;
    auto value = ReassignValue(workspace_, access_, db_, slot, [this](const Database& parent) {
      return ChooseParentRecord(this, parent, workspace_.options);
    });
    if (!value) return;
    control(slot)->Load(*value);
    dirty_ = true;
    return;
  }
  // A new record is stored first: its linked records need it to hang on.
  if (number_ == kNewRecord && !view_only_) dirty_ = true;
  if (!StoreShown() || number_ >= db_.count()) return;
  if (!FollowLink(workspace_, access_, slot, number_)) return;
  changed_ = true;
  QDialog::accept();
}

}  // namespace qv::app
