// The new-database dialog refuses names the database's character set cannot hold, rather than
// storing them with letters replaced.

#include "app/new_database_dialog.h"

#include <QtTest>

#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

class NewDatabaseDialogTest : public QObject {
  Q_OBJECT

 private slots:
  void namesOutsideTheCharacterSetAreRefused() {
    test::FixedClock clock;
    auto db = NewDatabase("Untitled", clock);
    NewDatabaseDialog dialog;
    dialog.SetDatabaseName(
        QString::fromUtf8("\xC5\x81\xC3\xB3"
                          "d\xC5\xBA"));  // Łódź
    dialog.AddField(QString::fromUtf8("Caf\xC3\xA9"), kText);
    QString problem;
    QVERIFY(!dialog.Apply(*db, problem));
    QVERIFY(
        problem.contains(QString::fromUtf8("database name: \"\xC5\x81\xC3\xB3"
                                           "d\xC5\xBA\"")));
    QVERIFY(!problem.contains("field name"));
    QCOMPARE(db->name, std::string("Untitled"));
    dialog.SetDatabaseName(QString::fromUtf8("Caf\xC3\xA9"));
    QVERIFY2(dialog.Apply(*db, problem), qPrintable(problem));
    QCOMPARE(db->name, std::string("Caf\xE9"));
    QCOMPARE(db->definition().field(0).name(), std::string("Caf\xE9"));
  }
};

QTEST_MAIN(NewDatabaseDialogTest)
#include "new_database_dialog_test.moc"
