// Editors refuse letters that Windows-1252 cannot hold instead of storing "?" for them.

#include "app/stored_text_guard.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

class StoredTextGuardTest : public QObject {
  Q_OBJECT
 private slots:
  void lettersTheFileCannotHoldAreRefusedAsTyped() {
    QWidget form;
    auto* line = new QLineEdit(&form);
    auto* note = new QPlainTextEdit(&form);
    auto* shown = new QLineEdit(&form);
    shown->setReadOnly(true);
    qv::app::GuardStoredTexts(&form);
    for (QChar c : QString::fromUtf8("Łódź café")) line->insert(c);  // typed one by one
    QCOMPARE(line->text(), QString::fromUtf8("ód café"));            // Ł and ź refused
    line->insert(QString::fromUtf8(" Kraków, Łódź"));                // pasted whole
    QCOMPARE(line->text(), QString::fromUtf8("ód café"));
    note->insertPlainText(QString::fromUtf8("été"));
    note->insertPlainText(QString::fromUtf8(" Łódź"));
    QCOMPARE(note->toPlainText(), QString::fromUtf8("été"));
    QVERIFY(shown->validator() == nullptr);
    QVERIFY(qv::app::StorableText(QString::fromUtf8("€ 5 — fine")));
    QVERIFY(!qv::app::StorableText(QString::fromUtf8("日本")));
  }
};

QTEST_MAIN(StoredTextGuardTest)
#include "stored_text_guard_test.moc"
