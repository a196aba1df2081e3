#pragma once
// "Print Records...", "Move Records To..." and "Copy Records To..." of the main window: the
// screens they open, and the calls into the printing and transfer operations of the core.

#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "app/app_context.h"
#include "platform/process_runner.h"

namespace qv::app {

struct PrintChoice {
  bool all = true;      // every record of the view, else the current record
  std::string command;  // the print command to use
};

class TransferDialogs {
 public:
  virtual ~TransferDialogs() = default;
  // The print dialog showing `command`; nothing on Cancel.
  virtual std::optional<PrintChoice> AskPrint(const std::string& command) = 0;
  // The file dialog for the database the records go to, starting in `folder`.
  virtual std::optional<std::string> AskTargetPath(const std::string& folder, bool move) = 0;
};

class WidgetTransferDialogs : public TransferDialogs {
 public:
  explicit WidgetTransferDialogs(QWidget* parent) : parent_(parent) {}
  std::optional<PrintChoice> AskPrint(const std::string& command) override;
  std::optional<std::string> AskTargetPath(const std::string& folder, bool move) override;

 private:
  QWidget* parent_;
};

class RecordTransfer {
 public:
  RecordTransfer(AppContext context, QWidget* parent);
  ~RecordTransfer();
  // Tests put scripted screens and a stand-in process runner in place.
  void setDialogs(TransferDialogs* dialogs) { dialogs_ = dialogs; }
  void setRunner(ProcessRunner* runner) { runner_ = runner; }

  // Each returns whether the record list must be refreshed.
  bool Print();
  bool Transfer(bool move);

 private:
  AppContext context_;
  std::unique_ptr<WidgetTransferDialogs> widget_dialogs_;
  std::unique_ptr<ProcessRunner> spawn_runner_;
  TransferDialogs* dialogs_;
  ProcessRunner* runner_;
};

}  // namespace qv::app
