#include "app/alarm_sound.h"

#include <QApplication>
#include <QAudioDevice>
#include <QCoreApplication>
#include <QFileInfo>
#include <QMediaDevices>
#include <QSoundEffect>
#include <QStandardPaths>
#include <QUrl>

namespace qv::app {

AlarmSound::AlarmSound(QObject* parent) : QObject(parent), file_(FindSoundFile()) {
  if (file_.isEmpty() || QMediaDevices::audioOutputs().isEmpty()) return;
  effect_ = new QSoundEffect(this);
  effect_->setSource(QUrl::fromLocalFile(file_));
}

QString AlarmSound::FindSoundFile() {
  const QString dir = QCoreApplication::applicationDirPath();
  QStringList candidates = {dir + "/../share/quorvant/alarm1.wav", dir + "/alarm1.wav"};
  const QString data =
      QStandardPaths::locate(QStandardPaths::GenericDataLocation, "quorvant/alarm1.wav");
  if (!data.isEmpty()) candidates.prepend(data);
  for (const QString& c : candidates)
    if (QFileInfo(c).isFile()) return QFileInfo(c).canonicalFilePath();
  return {};
}

void AlarmSound::Play() {
  if (effect_ && effect_->status() != QSoundEffect::Error) {
    effect_->play();
    return;
  }
  QApplication::beep();
}

}  // namespace qv::app
