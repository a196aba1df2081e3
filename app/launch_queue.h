#pragma once
// The command lines of second launches wait here until nothing holds on to the current database:
// no dialog, menu or message open, no record being edited, no command running. Handing a file
// over in the midst of one would replace the database under it.

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <functional>

namespace qv::app {

class LaunchQueue : public QObject {
  Q_OBJECT
 public:
  // `busy` says whether something holds the database now; `deliver` runs one hand-off.
  LaunchQueue(std::function<bool()> busy, std::function<void(const QString&)> deliver,
              QObject* parent = nullptr);

  // Delivers at once when nothing is open, otherwise as soon as that is so, in arrival order.
  void Post(const QString& text);
  int pending() const { return static_cast<int>(pending_.size()); }

 private:
  void DeliverWhenFree();

  std::function<bool()> busy_;
  std::function<void(const QString&)> deliver_;
  QStringList pending_;
  QTimer retry_;
  bool delivering_ = false;
};

// A modal dialog, a message box or a pop-up menu is open.
bool ModalInteractionOpen();

}  // namespace qv::app
