#pragma once
// "Beam Records...", "Beam Database..." and "Receive Via Infrared...": the send thread and the
// listen thread of the core run beside the interface; their questions and messages are shown
// here on the interface thread, and received objects are handled here too.

#include <QObject>
#include <QPointer>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>

#include "app/app_context.h"
#include "app/beam_dialogs.h"
#include "app/cross_thread_prompter.h"
#include "exchange/beam_send.h"
#include "exchange/obex_listener.h"

class QWidget;

namespace qv::app {

// The sending side's screens as a Prompter: progress texts go to the progress dialog,
// messages and questions to the program's prompter.
class SendScreens : public Prompter {
 public:
  explicit SendScreens(Prompter& inner) : inner_(inner) {}
  void setProgress(std::function<void(std::string_view)> show) { show_ = std::move(show); }
  void message(std::string_view text, std::string_view caption, Icon icon) override {
    inner_.message(text, caption, icon);
  }
  Answer ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon) override {
    return inner_.ask(text, caption, buttons, icon);
  }
  void progress(std::string_view text) override {
    if (show_) show_(text);
  }
  void busy(bool) override {}

 private:
  Prompter& inner_;
  std::function<void(std::string_view)> show_;
};

class Beaming : public QObject {
  Q_OBJECT
 public:
  // `refresh` redraws the record list after records arrive in the open database; `save` saves
  // the open database (a database is beamed as saved).
  Beaming(AppContext context, QWidget* window, std::function<void()> refresh,
          std::function<bool()> save);
  ~Beaming() override;

  void BeamRecords();
  void BeamDatabase();
  void Receive();

  bool listening() const { return listener_.running(); }
  bool sending() const { return sending_; }
  // The port the listener was given (a setting of 0 takes a free one).
  std::uint16_t listenPort() const { return port_; }
  // Tests answer "which records" without the dialog: true = the view, false = the current
  // record, nothing = Cancel.
  void setRecordsChoice(std::function<std::optional<bool>(bool has_current, int count)> choose) {
    choose_records_ = std::move(choose);
  }
  ReceiveDialog* receiveDialog() const { return receive_; }
  BeamProgressDialog* progressDialog() const { return progress_; }

 signals:
  void sendEnded(int result);
  void objectHandled(int result);
  void listenerEnded(bool ok);

 private:
  bool AllowedToBeam(Database& db);
  std::optional<bool> ChooseRecords(const Database& db);
  std::optional<ObexSendOptions> SendOptions();
  void StartSend(BeamObject object, bool file);
  void SendEnded();
  void StartListening();
  void StopListening();
  void TakeObject(const ReceivedObject& object, const std::string& temp);
  void HandleObject(const ReceivedObject& object, const std::string& path);
  void ShowStatus(const QString& text);
  std::unique_ptr<Database> OpenForRecords(const std::string& path);

  AppContext context_;
  QWidget* window_;
  std::function<void()> refresh_;
  std::function<bool()> save_;
  std::function<std::optional<bool>(bool, int)> choose_records_;
  SendScreens send_screens_;
  CrossThreadPrompter send_prompter_;
  CrossThreadPrompter listen_prompter_;
  ObexListener listener_;
  BeamSender sender_;
  bool ready_ = false;   // SetupIRStuff succeeded
  bool wanted_ = false;  // the user asked to receive; listening resumes after each send
  bool sending_ = false;
  std::atomic<std::uint16_t> port_{0};
  QPointer<BeamProgressDialog> progress_;
  QPointer<ReceiveDialog> receive_;
  // The listen thread waits while the interface thread handles its object, so the next one
  // cannot arrive meanwhile; stopping releases it.
  std::mutex mutex_;
  std::condition_variable handled_;
  int pending_ = 0;
  bool stopping_ = false;
};

}  // namespace qv::app
