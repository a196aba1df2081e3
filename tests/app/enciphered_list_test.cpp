// The record list over a database whose marked fields are enciphered: values show as
// enciphered, never as ciphertext, and opening the record asks for the encryption password.

#include <QtTest>

#include "app/commands.h"
#include "app/record_list_panel.h"
#include "security/record_crypt.h"
#include "security/record_header.h"
#include "security/settings.h"
#include "tests/app/app_fakes.h"
#include "tests/support/temp_files.h"

using namespace qv;

namespace {

std::string CellText(test::AppHarness& h, int row, int column) {
  auto* model = h.application.window().panel()->model();
  return model->data(model->index(row, column), Qt::DisplayRole).toString().toStdString();
}

}  // namespace

class EncipheredListTest : public QObject {
  Q_OBJECT
 private slots:
  void encipheredValuesShowAsSuchUntilThePasswordOpensTheRecord() {
    auto db = test::SampleDatabase("Fruit");
    db->definition().field(0).set_encrypted(true);
    SetEncryptionMode(db->definition(), kEncryptMarkedFields);
    EnableRecordHeaders(*db);
    QVERIFY(EncryptRecordFields(db->definition(), db->records[0].data.edit(), "pw"));
    QVERIFY(EncryptRecordFields(db->definition(), db->records[2].data.edit(), "pw"));
    auto h = std::make_unique<test::AppHarness>();
    h->settings.values["LastFileUsed"] = h->WriteDatabase(std::move(db), "Fruit.PDB");
    h->application.Start({});

    QCOMPARE(CellText(*h, 0, 0), std::string("(enciphered)"));
    QCOMPARE(CellText(*h, 0, 1), std::string("3"));  // not marked
    QCOMPARE(CellText(*h, 1, 0), std::string("banana"));
    QCOMPARE(CellText(*h, 2, 0), std::string("(enciphered)"));

    auto* panel = h->application.window().panel();
    panel->Tap(0, 0);  // the password prompt cancelled: the record stays closed
    QCOMPARE(h->access.passwords.calls.size(), std::size_t{1});
    QCOMPARE(h->access.passwords.calls[0].title, std::string("Enter Encryption Password"));
    QVERIFY(h->dialogs.opened_records.empty());
    QCOMPARE(CellText(*h, 0, 0), std::string("(enciphered)"));

    h->access.passwords.Type("pw");
    panel->Tap(0, 0);
    QCOMPARE(h->dialogs.opened_records, std::vector<std::uint32_t>{0});
    QCOMPARE(CellText(*h, 0, 0), std::string("apple"));
    // Asked once: the other enciphered records of the session are readable too.
    QCOMPARE(CellText(*h, 2, 0), std::string("cherry"));
    panel->Tap(2, 0);
    QCOMPARE(h->access.passwords.calls.size(), std::size_t{2});
    QCOMPARE(h->dialogs.opened_records, (std::vector<std::uint32_t>{0, 2}));

    // Save writes them enciphered, asking nothing more, and the list stays readable.
    h->application.window().action(app::command::kSave)->trigger();
    QCOMPARE(h->access.passwords.calls.size(), std::size_t{2});
    std::string file = test::Slurp(h->paths.DataFolder() + "/Fruit.PDB");
    QVERIFY(file.find("apple") == std::string::npos);
    QVERIFY(file.find("cherry") == std::string::npos);
    QVERIFY(file.find("banana") != std::string::npos);
    QCOMPARE(CellText(*h, 2, 0), std::string("cherry"));
  }
};

QTEST_MAIN(EncipheredListTest)
#include "enciphered_list_test.moc"
