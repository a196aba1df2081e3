// Pictures of the main window on the example database, the start chooser and the preferences,
// written under the build folder for people to look at.

#include <QDir>
#include <QFile>
#include <QtTest>

#include "app/preferences_dialog.h"
#include "app/start_chooser_dialog.h"
#include "tests/app/app_fakes.h"

using namespace qv;

namespace {

// Saves the widget's picture and checks it is more than a blank rectangle.
void Shoot(QWidget& widget, const QString& name) {
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

}  // namespace

class ScreenshotTest : public QObject {
  Q_OBJECT
 private slots:
  void mainWindowOnTheExample() {
    test::AppHarness h;
    QDir().mkpath(QString::fromStdString(h.paths.DataFolder()));
    std::string copy = h.paths.DataFolder() + "/Inventory.PDB";
    QVERIFY(QFile::copy(EXAMPLE_DB, QString::fromStdString(copy)));
    h.settings.values["LastFileUsed"] = copy;
    h.application.Start({});
    QVERIFY(h.application.workspace().has_open_database());
    h.application.window().resize(920, 560);
    Shoot(h.application.window(), "main_window");
  }

  void startChooser() {
    app::StartChooserDialog chooser({{"Inventory", 0}, {"Recipes", 1}, {"Garden Log", 2}});
    Shoot(chooser, "start_chooser");
  }

  void preferences() {
    app::PreferencesDialog dialog{Preferences{}};
    Shoot(dialog, "preferences");
  }
};

QTEST_MAIN(ScreenshotTest)
#include "screenshot_test.moc"
