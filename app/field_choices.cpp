#include "app/field_choices.h"

#include "engine/text.h"

namespace qv::app {

QString FieldName(const DatabaseDefinition& definition, int slot) {
  if (slot < 0 || slot >= kFieldSlots) return {};
  return QString::fromStdString(Cp1252ToUtf8(definition.field(slot).name()));
}

void AddFieldItems(QComboBox* box, const DatabaseDefinition& definition,
                   const std::function<bool(int slot)>& wanted) {
  for (int position = 0; position < kFieldSlots; ++position) {
    int slot = definition.display_slot(position);
    if (slot < 0 || slot >= kFieldSlots || !definition.field(slot).used()) continue;
    if (wanted && !wanted(slot)) continue;
    box->addItem(FieldName(definition, slot), slot);
  }
}

void SelectSlot(QComboBox* box, int slot) {
  int index = slot >= 0 ? box->findData(slot) : -1;
  box->setCurrentIndex(index >= 0 ? index : 0);
}

int ChosenSlot(const QComboBox* box) {
  QVariant data = box->currentData();
  return data.isValid() ? data.toInt() : -1;
}

}  // namespace qv::app
