#include "app/beaming.h"

#include <QDir>
#include <QThread>
#include <QWidget>
#include <cstdio>
#include <memory>

#include "app/beam_dialogs.h"
#include "app/core_calls.h"
#include "app/preferences_store.h"
#include "engine/text.h"
#include "exchange/beam_receive.h"
#include "processing/store.h"
#include "security/access.h"
#include "security/cipher_session.h"
#include "security/settings.h"

namespace qv::app {

namespace {

QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The records as the file would store them: what is held deciphered in memory goes out
// enciphered again, as the handheld sends it.
std::unique_ptr<Database> StoredCopy(const Database& db) {
  auto stored = std::make_unique<Database>();
  std::uint32_t bad = 0;
  if (ParseDatabase(SavedImage(db), *stored, bad) != ReadError::None ||
      stored->count() != db.count())
    return nullptr;
  stored->visible = db.visible;
  return stored;
}

// Closes a dialog without its Cancel meaning (a QDialog's close() would reject it).
template <typename Dialog>
void Dismiss(QPointer<Dialog>& dialog) {
  if (!dialog) return;
  dialog->accept();
  dialog->deleteLater();
  dialog = nullptr;
}

}  // namespace

Beaming::Beaming(AppContext context, QWidget* window, std::function<void()> refresh,
                 std::function<bool()> save)
    : context_(context),
      window_(window),
      refresh_(std::move(refresh)),
      save_(std::move(save)),
      send_screens_(context.workspace.prompter),
      send_prompter_(this, send_screens_),
      listen_prompter_(this, context.workspace.prompter),
      listener_(
          listen_prompter_,
          [this](const ReceivedObject& object, const std::string& temp) {
            TakeObject(object, temp);
          },
          [this](std::string_view text) {
            QMetaObject::invokeMethod(
                this, [this, text = Text(text)] { ShowStatus(text); }, Qt::QueuedConnection);
          }),
      sender_(send_prompter_, [this](std::string_view) {
        QMetaObject::invokeMethod(
            this, [this] { SendEnded(); }, Qt::QueuedConnection);
      }) {
  send_screens_.setProgress([this](std::string_view text) {
    if (progress_) progress_->showProgress(Text(text));
  });
}

Beaming::~Beaming() {
  // Nothing may wait for this thread any more: dialogs asked for are dropped, waits released.
  send_prompter_.Close();
  listen_prompter_.Close();
  sender_.cancel().Cancel();
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  handled_.notify_all();
  listener_.StopListenThread();
  sender_.Wait();
}

bool Beaming::AllowedToBeam(Database& db) {
  Workspace& ws = context_.workspace;
  int access = context_.access.CheckAccess(ws, db, Guarded::BeamData, true);
  if (access == kAccessViewOnly)
    ws.prompter.message(kNoSecurityAccess, kAccessDeniedCaption, Icon::Exclamation);
  return access == kAccessFull;
}

std::optional<bool> Beaming::ChooseRecords(const Database& db) {
  const bool has_current = db.current < db.count() && !db.visible.empty();
  const int count = static_cast<int>(db.visible.size());
  if (choose_records_) return choose_records_(has_current, count);
  if (!has_current && count == 0) {
    context_.workspace.prompter.message("There are no records in this view to beam.",
                                        "Beam Records", Icon::Information);
    return std::nullopt;
  }
  BeamRecordsDialog dialog(has_current, count, window_);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.allRecords();
}

std::optional<ObexSendOptions> Beaming::SendOptions() {
  BeamPreferences p = ReadBeamPreferences(context_.workspace.settings);
  auto peer = ParseEndpoint(p.peer, static_cast<std::uint16_t>(p.port));
  if (!peer || peer->host.empty()) {
    context_.workspace.prompter.message(
        StringPrintf("The address to beam to, \"%s\", cannot be used. Set it under Beaming in "
                     "Preferences.",
                     p.peer.c_str()),
        "Beam Data", Icon::Exclamation);
    return std::nullopt;
  }
  ObexSendOptions options;
  options.peer = *peer;
  return options;  // looking for the peer goes on until it answers or the user cancels
}

void Beaming::BeamRecords() {
  Workspace& ws = context_.workspace;
  if (!ws.has_open_database() || sending_) return;
  Database& db = ws.current();
  if (!AllowedToBeam(db)) return;
  auto all = ChooseRecords(db);
  if (!all) return;
  auto stored = StoredCopy(db);
  if (!stored) {
    ws.prompter.message(StringPrintf("%s: Error allocating buffer - %d", "SendPtrThread", ENOMEM),
                        "Error", Icon::Error);
    return;
  }
  auto object = *all ? ViewObject(*stored) : RecordObject(*stored, db.current);
  if (!object) {
    // An empty view or record sends nothing and leaves listening stopped, as it always did.
    StopListening();
    return;
  }
  StartSend(std::move(*object), false);
}

void Beaming::BeamDatabase() {
  Workspace& ws = context_.workspace;
  if (!ws.has_open_database() || sending_) return;
  Database& db = ws.current();
  if (!AllowedToBeam(db)) return;
  // The file is what goes out, so what is shown must be in it first.
  if (db.unsaved() || db.changed) {
    auto answer = ws.prompter.ask(
        StringPrintf("%s has changes that are not saved. Save it and beam it?", db.name.c_str()),
        "Beam Database", Buttons::OkCancel, Icon::Question);
    if (answer != Answer::Ok || !save_() || ws.current().unsaved()) return;
  }
  auto object = DatabaseFileObject(ws.current().path, ws.prompter);
  if (!object) return;
  StartSend(std::move(*object), true);
}

void Beaming::StartSend(BeamObject object, bool file) {
  auto options = SendOptions();
  if (!options) return;
  StopListening();  // the port is either listening or sending
  progress_ = new BeamProgressDialog(
      QString::fromStdString(options->peer.host + ":" + std::to_string(options->peer.port)),
      window_);
  connect(progress_, &BeamProgressDialog::cancelRequested, this,
          [this] { sender_.cancel().Cancel(); });
  progress_->show();
  send_prompter_.Open();
  auto shared = std::make_shared<BeamObject>(std::move(object));
  sending_ = true;
  if (!sender_.Start([shared] { return std::optional<BeamObject>(*shared); }, file, *options)) {
    sending_ = false;
    Dismiss(progress_);
    if (wanted_) StartListening();
  }
}

void Beaming::SendEnded() {
  sending_ = false;
  Dismiss(progress_);
  // "START_LISTENING": receiving resumes when the user had it on.
  if (wanted_) StartListening();
  emit sendEnded(sender_.last_result());
}

void Beaming::Receive() {
  Workspace& ws = context_.workspace;
  if (!ready_) ready_ = SetupIRStuff(ws.settings, ws.prompter) == 1;
  if (!ready_) return;
  wanted_ = true;
  if (!listener_.running()) StartListening();
  if (!listener_.running()) return;
  if (!receive_) {
    BeamPreferences p = ReadBeamPreferences(ws.settings);
    receive_ = new ReceiveDialog(
        QString::fromStdString(p.bind + ":" + std::to_string(port_ ? port_.load() : p.port)),
        window_);
    // Cancel stops receiving; the dialog closing after an object keeps it on.
    connect(receive_, &QDialog::rejected, this, [this] {
      wanted_ = false;
      StopListening();
      if (receive_) receive_->deleteLater();
    });
  }
  receive_->show();
  receive_->raise();
  receive_->activateWindow();
}

void Beaming::StartListening() {
  Workspace& ws = context_.workspace;
  ListenOptions options = ListenOptionsFromSettings(ws.settings, context_.paths.TempFolder());
  QDir().mkpath(QString::fromStdString(context_.paths.TempFolder()));
  options.on_bound = [this](std::uint16_t port) { port_ = port; };
  options.on_end = [this](bool ok) {
    QMetaObject::invokeMethod(
        this,
        [this, ok] {
          if (!ok) {
            wanted_ = false;
            Dismiss(receive_);
          }
          emit listenerEnded(ok);
        },
        Qt::QueuedConnection);
  };
  {
    std::lock_guard lock(mutex_);
    stopping_ = false;
  }
  listen_prompter_.Open();
  listener_.StartListenThread2(options);
}

void Beaming::StopListening() {
  if (!listener_.running()) return;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  handled_.notify_all();
  // A question the listen thread is waiting on is dropped rather than holding the stop.
  listen_prompter_.Close();
  listener_.StopListenThread();
  port_ = 0;
}

void Beaming::TakeObject(const ReceivedObject& object, const std::string& temp) {
  // On the listen thread. The file is handed over under a name of its own, so no later object
  // can overwrite it before the interface thread has dealt with it.
  const std::string handed = temp + ".received";
  if (std::rename(temp.c_str(), handed.c_str()) != 0) {
    std::remove(temp.c_str());
    return;
  }
  {
    std::lock_guard lock(mutex_);
    ++pending_;
  }
  QMetaObject::invokeMethod(
      this,
      [this, object, handed] {
        HandleObject(object, handed);
        {
          std::lock_guard lock(mutex_);
          --pending_;
        }
        handled_.notify_all();
      },
      Qt::QueuedConnection);
  std::unique_lock lock(mutex_);
  handled_.wait(lock, [this] { return pending_ == 0 || stopping_; });
}

std::unique_ptr<Database> Beaming::OpenForRecords(const std::string& path) {
  Workspace& ws = context_.workspace;
  AccessGate& gate = context_.access;
  auto db = std::make_unique<Database>();
  if (!LoadDatabase(*db, path, ws.prompter) || !gate.AllowOpen(ws, *db)) return nullptr;
  DatabaseDefinition& definition = db->definition();
  if (definition.settings_flags() & kDatabaseEnciphered) {
    if (!gate.UnlockLoaded(ws, *db)) return nullptr;
    definition.set_settings_flags(definition.settings_flags() & ~kDatabaseEnciphered);
  }
  if (gate.CheckAccess(ws, *db, Guarded::OpenDatabase, false) != kAccessFull) return nullptr;
  qv::PositionOpenedDatabase(*db, ws.prompter);
  return db;
}

void Beaming::HandleObject(const ReceivedObject& object, const std::string& path) {
  Workspace& ws = context_.workspace;
  AccessGate& gate = context_.access;
  ReceiveHost host{ws.prompter,
                   ws.clock,
                   context_.paths.DataFolder(),
                   ws.has_open_database() ? &ws.current() : nullptr,
                   [this](const std::string& p) { return OpenForRecords(p); },
                   [&ws, &gate](Database& db) {
                     gate.EncipherOnClose(ws, db);
                     if (SaveDatabase(db, ws.clock)) return true;
                     ws.prompter.message("ERROR:File could not be saved", "Update", Icon::Error);
                     return false;
                   },
                   [this, &ws] {
                     // The received records through the view's filter, then on screen.
                     RebuildList(ws.current());
                     refresh_();
                   },
                   [&ws, &gate](Database& db) {
                     return gate.CheckAccess(ws, db, Guarded::OpenDatabase, false) == kAccessFull;
                   }};
  QDir().mkpath(QString::fromStdString(host.data_folder));
  int result = HandleReceivedObject(host, object, path);
  emit objectHandled(result);
}

void Beaming::ShowStatus(const QString& text) {
  if (!receive_) return;
  receive_->setStatus(text);
  // The object is handed over next: the dialog closes, listening goes on.
  if (text == "Database Record(s) Received" || text == "Database File Received") Dismiss(receive_);
}

}  // namespace qv::app
