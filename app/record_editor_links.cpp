// The record editor's Link and Linked fields: opening the linked records and reassigning a
// record to another parent.

#include <QInputDialog>

#include "app/field_controls.h"
#include "app/link_controls.h"
#include "app/linked_navigation.h"
#include "app/record_editor_dialog.h"
#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/record.h"
#include "engine/text.h"

namespace qv::app {

namespace {

// Whether parent record `n` is the one a record with `key` belongs to now.
bool HoldsKey(const Database& db, std::uint32_t n, const std::string& child, std::uint32_t key) {
  for (int s = 0; s < kFieldSlots; ++s)
    if (db.definition().field_type(s) == kLink && LinkTarget(db.definition().field(s)) == child &&
        LinkKey(db, s, n) == key)
      return true;
  return false;
}

// The parent records the user may choose from, by their look-up field, in list order, the
// present one chosen to begin with.
std::optional<std::uint32_t> ChooseParentRecord(QWidget* parent, const Database& db,
                                                const std::string& child, std::uint32_t key,
                                                const FormatOptions& options) {
  QStringList items;
  std::vector<std::uint32_t> numbers;
  int present = 0;
  const int lookup = db.definition().lookup_field();
  for (std::uint32_t n : db.visible) {
    if (n >= db.count()) continue;
    if (key != 0 && HoldsKey(db, n, child, key)) present = static_cast<int>(items.size());
    QString text = QString::fromStdString(Cp1252ToUtf8(RecordValueText(db, n, lookup, options)));
    items << QString("%1. %2").arg(items.size() + 1).arg(text);
    numbers.push_back(n);
  }
  if (items.isEmpty()) return std::nullopt;
  bool ok = false;
  QString chosen = QInputDialog::getItem(parent, QObject::tr("Reassign"),
                                         QObject::tr("The record of %1 this record belongs to:")
                                             .arg(QString::fromStdString(Cp1252ToUtf8(db.name))),
                                         items, present, false, &ok);
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
    auto shown = control(slot)->Value();
    const std::uint32_t key = shown ? ValueUInt32(*shown) : 0;
    const std::string child = db_.header.Name();
    auto value = ReassignValue(workspace_, access_, db_, slot, [&](const Database& parent) {
      return ChooseParentRecord(this, parent, child, key, workspace_.options);
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
