#pragma once
// One running program per user and data folder: a second launch hands its command line to the
// running one over a local socket and ends.

#include <QLocalServer>
#include <QObject>
#include <optional>

namespace qv::app {

class SingleInstance : public QObject {
  Q_OBJECT
 public:
  // Longest command-line text accepted from a second launch.
  static constexpr quint32 kMaxMessage = 64 * 1024;

  explicit SingleInstance(QString server_name, QObject* parent = nullptr);
  // The socket name for a data folder.
  static QString ServerName(const QString& data_folder);

  // Sends `text` to a running instance; true when one took it.
  bool HandOff(const QString& text, int timeout_ms = 2000) const;
  // Starts listening (replacing a socket a crashed instance left behind); false on failure.
  bool Listen();

 signals:
  void received(const QString& text);

 private:
  void Accept();
  QString name_;
  QLocalServer server_;
};

// The frame of one message: a 4-byte big-endian length, then the UTF-8 text.
QByteArray FrameMessage(const QString& text);
// Takes one complete message off the front of `buffer`. Nothing while it is incomplete; `bad` is
// set when the length is beyond kMaxMessage.
std::optional<QString> TakeMessage(QByteArray& buffer, bool& bad);

}  // namespace qv::app
