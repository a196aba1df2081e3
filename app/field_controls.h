#pragma once
// The record editor's control for one field, by type: text and note editors limited to the
// field length, checked number, date and time entry with their choosers, pop-up choosers,
// check boxes, the image editor, and read-only boxes for the values the program computes.

#include <QObject>
#include <optional>
#include <span>

#include "engine/database.h"

class QWidget;

namespace qv::app {

class FieldControl : public QObject {
  Q_OBJECT
 public:
  // The control for a used field of `db`; its widget is made a child of `parent`.
  static FieldControl* Create(const Database& db, int slot, const FormatOptions& options,
                              QWidget* parent);
  int slot() const { return slot_; }
  virtual QWidget* widget() const = 0;
  // Shows a stored value (already deciphered).
  virtual void Load(std::span<const std::uint8_t> value) = 0;
  // The value to store; nothing while the entry is not a value of the field.
  virtual std::optional<Bytes> Value() const = 0;
  virtual void SetReadOnly(bool on) = 0;
  // Calculated and Conditional values: refreshed from the other fields, never typed.
  virtual bool computed() const { return false; }
  // Sets the entry from text as a user types it (tests, and paste); false when not accepted.
  virtual bool SetText(const QString& text);
  virtual QString text() const;

 signals:
  void edited();
  // The pop-up chooser's "Edit Popups" button.
  void editPopupsRequested(int slot);
  // An External field's button: the user activates its plug-in.
  void externalSelected(int slot);
  // A Link field's "Open Linked Records", a Linked field's "Reassign...".
  void linkRequested(int slot);

 protected:
  FieldControl(int slot, QObject* parent) : QObject(parent), slot_(slot) {}

 private:
  int slot_;
};

}  // namespace qv::app
