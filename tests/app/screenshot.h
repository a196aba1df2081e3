#pragma once
// Pictures of windows and dialogs, written under the build folder for people to look at.

#include <QDir>
#include <QSet>
#include <QtTest>

namespace qv::test {

// Saves the widget's picture as SCREENSHOT_DIR/name.png and checks it is more than a blank
// rectangle.
inline void Shoot(QWidget& widget, const QString& name) {
  widget.show();
  QVERIFY(QTest::qWaitForWindowExposed(&widget));
  QImage image = widget.grab().toImage();
  QVERIFY(!image.isNull());
  QSet<QRgb> colours;
  for (int y = 0; y < image.height(); y += 3)
    for (int x = 0; x < image.width(); x += 3) colours.insert(image.pixel(x, y));
  QVERIFY2(colours.size() > 8, qPrintable(name));
  QDir().mkpath(SCREENSHOT_DIR);
  QVERIFY(image.save(QString(SCREENSHOT_DIR) + "/" + name + ".png"));
}

}  // namespace qv::test
