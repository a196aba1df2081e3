#pragma once
// The beaming screens: which records to beam, the looking/sending progress with its Cancel, and
// the receive dialog with its status line.

#include <QDialog>

class QLabel;
class QRadioButton;

namespace qv::app {

// "Beam Records": the current record or every record the view shows.
class BeamRecordsDialog : public QDialog {
  Q_OBJECT
 public:
  // A choice that has nothing to beam is offered greyed.
  BeamRecordsDialog(bool has_current, int view_count, QWidget* parent = nullptr);
  bool allRecords() const;

 private:
  QRadioButton* current_;
  QRadioButton* view_;
};

// "Beam Data" while the peer is looked for, then "Sending Data". Cancel (or Escape) emits
// cancelRequested; the dialog stays until the send thread ends.
class BeamProgressDialog : public QDialog {
  Q_OBJECT
 public:
  explicit BeamProgressDialog(const QString& peer, QWidget* parent = nullptr);
  // The texts the sending code reports: "Looking for Sending Device....", "Sending Data...".
  void showProgress(const QString& text);
  void reject() override;

 signals:
  void cancelRequested();

 private:
  QLabel* text_;
  QLabel* hint_;
};

// "Receive IR": what to do on the other handheld, and the listener's status line.
class ReceiveDialog : public QDialog {
  Q_OBJECT
 public:
  explicit ReceiveDialog(const QString& where, QWidget* parent = nullptr);
  void setStatus(const QString& text);
  QString status() const;

 private:
  QLabel* text_;
  QLabel* status_;
};

}  // namespace qv::app
