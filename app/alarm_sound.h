#pragma once
// The alarm's sound: the bundled alarm1.wav through Qt Multimedia, the system beep where no
// audio output (or no sound file) is available.

#include <QObject>
#include <QString>

class QSoundEffect;

namespace qv::app {

class AlarmSound : public QObject {
  Q_OBJECT
 public:
  explicit AlarmSound(QObject* parent = nullptr);
  void Play();
  // Where alarm1.wav was found; empty when it was not.
  const QString& file() const { return file_; }

  // The installed sound file: beside the program's data, else in the build tree.
  static QString FindSoundFile();

 private:
  QString file_;
  QSoundEffect* effect_ = nullptr;
};

}  // namespace qv::app
