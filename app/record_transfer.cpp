#include "app/record_transfer.h"

#include <QFileDialog>

#include "app/linked_navigation.h"
#include "app/print_dialog.h"
#include "exchange/print_records.h"
#include "exchange/spawn_process.h"
#include "exchange/transfer.h"
#include "processing/linked_text.h"
#include "processing/store.h"
#include "security/settings.h"

namespace qv::app {

std::optional<PrintChoice> WidgetTransferDialogs::AskPrint(const std::string& command) {
  PrintDialog dialog(command, parent_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return PrintChoice{dialog.allRecords(), dialog.command()};
}

std::optional<std::string> WidgetTransferDialogs::AskTargetPath(const std::string& folder,
                                                                bool move) {
  QFileDialog dialog(parent_,
                     move ? QObject::tr("Move Records To") : QObject::tr("Copy Records To"));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  dialog.setNameFilter("Quorvant Files (*.pdb);;All Files (*.*)");
  dialog.setDirectory(QString::fromStdString(folder));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().first().toStdString();
}

RecordTransfer::RecordTransfer(AppContext context, QWidget* parent)
    : context_(context),
      widget_dialogs_(std::make_unique<WidgetTransferDialogs>(parent)),
      spawn_runner_(std::make_unique<SpawnProcessRunner>()),
      dialogs_(widget_dialogs_.get()),
      runner_(spawn_runner_.get()) {}

RecordTransfer::~RecordTransfer() = default;

bool RecordTransfer::Print() {
  Workspace& ws = context_.workspace;
  if (!ws.has_open_database()) return false;
  std::string& preference = ws.preferences.print_command;
  const std::string command = preference.empty() ? kDefaultPrintCommand : preference;
  auto choice = dialogs_->AskPrint(command);
  if (!choice) return false;
  // A command changed here is the preference from now on.
  if (choice->command != command) preference = choice->command;
  const std::string temp = context_.paths.DocumentsFolder() + "/" + kPrintTempFileName;
  LinkedTextWriter linked(OpenTable(ws), ws.prompter, GateAccess(ws, context_.access), ws.options);
  PrintRecords(ws.current(), choice->all,
               {temp, preference.empty() ? kDefaultPrintCommand : preference}, ws.options,
               ws.prompter, *runner_, linked.writer());
  return false;
}

bool RecordTransfer::Transfer(bool move) {
  Workspace& ws = context_.workspace;
  if (!ws.has_open_database()) return false;
  auto path = dialogs_->AskTargetPath(context_.paths.DataFolder(), move);
  if (!path) return false;
  AccessGate& gate = context_.access;
  TransferServices services{ws.prompter, ws.clock, {}, {}, {}, {}};
  services.allowed = [&ws, &gate](Database& db, int action) {
    int access = gate.CheckAccess(ws, db, static_cast<Guarded>(action), true);
    if (access == kAccessViewOnly)
      ws.prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
    return access == kAccessFull;
  };
  services.open = [&ws, &gate](const std::string& target) -> std::unique_ptr<Database> {
    auto db = std::make_unique<Database>();
    if (!LoadDatabase(*db, target, ws.prompter) || !gate.AllowOpen(ws, *db)) return nullptr;
    DatabaseDefinition& definition = db->definition();
    if (definition.settings_flags() & kDatabaseEnciphered) {
      if (!gate.UnlockLoaded(ws, *db)) return nullptr;
      definition.set_settings_flags(definition.settings_flags() & ~kDatabaseEnciphered);
    }
    PositionOpenedDatabase(*db, ws.prompter);
    return db;
  };
  services.save = [&ws, &gate](Database& db) {
    gate.EncipherOnClose(ws, db);
    if (SaveDatabase(db, ws.clock)) return true;
    ws.prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
    return false;
  };
  for (int i = 0; i < kStackSlots; ++i) services.open_databases.push_back(ws.slot(i));
  TransferRecords(move, kAllViewRecords, ws.current(), *path, services);
  return true;
}

}  // namespace qv::app
