#pragma once
// One record's values, read-only. (The record editor replaces it for editing when it exists.)

#include <QDialog>

#include "engine/workspace.h"

namespace qv::app {

class RecordViewDialog : public QDialog {
  Q_OBJECT
 public:
  RecordViewDialog(const Database& db, std::uint32_t number, const FormatOptions& options,
                   QWidget* parent = nullptr);
};

}  // namespace qv::app
