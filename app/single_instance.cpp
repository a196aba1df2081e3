#include "app/single_instance.h"

#include <QCryptographicHash>
#include <QLocalSocket>
#include <optional>

namespace qv::app {

QByteArray FrameMessage(const QString& text) {
  QByteArray body = text.toUtf8();
  if (static_cast<quint32>(body.size()) > SingleInstance::kMaxMessage) body.truncate(SingleInstance::kMaxMessage);
  quint32 n = static_cast<quint32>(body.size());
  QByteArray frame;
  frame.append(static_cast<char>(n >> 24)).append(static_cast<char>(n >> 16));
  frame.append(static_cast<char>(n >> 8)).append(static_cast<char>(n));
  return frame + body;
}

std::optional<QString> TakeMessage(QByteArray& buffer, bool& bad) {
  bad = false;
  if (buffer.size() < 4) return std::nullopt;
  const auto* p = reinterpret_cast<const unsigned char*>(buffer.constData());
  quint32 n = (quint32{p[0]} << 24) | (quint32{p[1]} << 16) | (quint32{p[2]} << 8) | quint32{p[3]};
  if (n > SingleInstance::kMaxMessage) {
    bad = true;
    return std::nullopt;
  }
  if (static_cast<quint64>(buffer.size()) < 4 + quint64{n}) return std::nullopt;
  QString text = QString::fromUtf8(buffer.constData() + 4, static_cast<qsizetype>(n));
  buffer.remove(0, static_cast<qsizetype>(4 + n));
  return text;
}

SingleInstance::SingleInstance(QString server_name, QObject* parent)
    : QObject(parent), name_(std::move(server_name)) {
  connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::Accept);
}

QString SingleInstance::ServerName(const QString& data_folder) {
  QByteArray key = QCryptographicHash::hash(data_folder.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
  return "quorvant-" + qEnvironmentVariable("USER", "user") + "-" + QString::fromLatin1(key);
}

bool SingleInstance::HandOff(const QString& text, int timeout_ms) const {
  QLocalSocket socket;
  socket.connectToServer(name_);
  if (!socket.waitForConnected(timeout_ms)) return false;
  socket.write(FrameMessage(text));
  if (!socket.waitForBytesWritten(timeout_ms)) return false;
  socket.disconnectFromServer();
  return true;
}

bool SingleInstance::Listen() {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  if (server_.listen(name_)) return true;
  // Nobody answered HandOff, so the socket file is a leftover.
  QLocalServer::removeServer(name_);
  return server_.listen(name_);
}

void SingleInstance::Accept() {
  while (QLocalSocket* socket = server_.nextPendingConnection()) {
    auto* buffer = new QByteArray;
    connect(socket, &QLocalSocket::readyRead, this, [this, socket, buffer] {
      buffer->append(socket->readAll());
      bool bad = false;
      while (auto text = TakeMessage(*buffer, bad)) emit received(*text);
      if (bad) socket->abort();
    });
    connect(socket, &QLocalSocket::disconnected, this, [socket, buffer] {
      delete buffer;
      socket->deleteLater();
    });
  }
}

}  // namespace qv::app
