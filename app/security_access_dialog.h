#pragma once
// "Security Access": one drop-down list per guarded action ("View Records Only" only for Edit
// Records; the Delete Database row is kept hidden). OK writes every action's value.

#include <QDialog>
#include <array>

#include "engine/schema.h"
#include "security/access.h"

class QComboBox;

namespace qv::app {

class SecurityAccessDialog : public QDialog {
  Q_OBJECT
 public:
  explicit SecurityAccessDialog(const DatabaseDefinition& definition, QWidget* parent = nullptr);
  // Writes the chosen values with SetAccess.
  void Store(DatabaseDefinition& definition) const;
  QComboBox* choice(int action) const { return choices_[static_cast<std::size_t>(action)]; }

 private:
  std::array<QComboBox*, kAccessActions> choices_{};
};

}  // namespace qv::app
