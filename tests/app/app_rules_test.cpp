// The application's rules that need no window: recent files, file names, preferences, launch
// texts, column widths, type-ahead and the hand-off framing.

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "app/column_layout.h"
#include "app/database_paths.h"
#include "app/delete_records.h"
#include "app/launch_request.h"
#include "app/preferences_store.h"
#include "app/recent_files.h"
#include "app/single_instance.h"
#include "app/type_ahead.h"
#include "app/window_title.h"
#include "tests/app/app_fakes.h"

using namespace qv;
using namespace qv::app;

class AppRulesTest : public QObject {
  Q_OBJECT

 private:
  static void Fill(test::MemorySettings& s, int n) {
    for (int k = 0; k < n; ++k) s.values["LastFile" + std::to_string(k)] = "/db/f" + std::to_string(k) + ".PDB";
  }

 private slots:
  void recentThirdBecomesFirst() {
    test::MemorySettings s;
    Fill(s, 5);
    AddRecentFile(s, "/db/f2.PDB");
    auto files = ReadRecentFiles(s);
    QCOMPARE(files[0], std::string("/db/f2.PDB"));
    QCOMPARE(files[1], std::string("/db/f0.PDB"));
    QCOMPARE(files[2], std::string("/db/f1.PDB"));
    QCOMPARE(files[3], std::string("/db/f3.PDB"));
    QCOMPARE(files[4], std::string("/db/f4.PDB"));
    // All ten values are written, the empty ones too.
    QCOMPARE(s.values.at("LastFile9"), std::string());
  }

  void recentEleventhDropsOldest() {
    test::MemorySettings s;
    Fill(s, 10);
    AddRecentFile(s, "/db/new.PDB");
    auto files = ReadRecentFiles(s);
    QCOMPARE(files[0], std::string("/db/new.PDB"));
    QCOMPARE(files[1], std::string("/db/f0.PDB"));
    QCOMPARE(files[9], std::string("/db/f8.PDB"));
    for (const auto& f : files) QVERIFY(f != "/db/f9.PDB");
  }

  void recentMatchesIgnoringCase() {
    test::MemorySettings s;
    Fill(s, 3);
    AddRecentFile(s, "/DB/F1.pdb");
    auto files = ReadRecentFiles(s);
    // Found, so moved rather than added: the list keeps three entries, the stored spelling.
    QCOMPARE(files[0], std::string("/db/f1.PDB"));
    QCOMPARE(files[1], std::string("/db/f0.PDB"));
    QCOMPARE(files[2], std::string("/db/f2.PDB"));
    QCOMPARE(files[3], std::string());
  }

  void recentFirstStaysAndMissingIsNothing() {
    test::MemorySettings s;
    QVERIFY(!GetRecentFile(s, 0));
    QVERIFY(!GetRecentFile(s, 10));
    QVERIFY(!GetRecentFile(s, -1));
    AddRecentFile(s, "/a.PDB");
    AddRecentFile(s, "/a.PDB");
    QCOMPARE(*GetRecentFile(s, 0), std::string("/a.PDB"));
    QCOMPARE(*GetRecentFile(s, 1), std::string());
  }

  void untitledPathSkipsExistingFiles() {
    QTemporaryDir dir;
    std::string folder = dir.path().toStdString();
    QCOMPARE(MakeUntitledPath(folder), folder + "/Untitled1.PDB");
    for (const char* name : {"/Untitled1.PDB", "/Untitled2.PDB"}) {
      QFile f(dir.path() + name);
      QVERIFY(f.open(QIODevice::WriteOnly));
    }
    QCOMPARE(MakeUntitledPath(folder), folder + "/Untitled3.PDB");
  }

  void proposedPathUsesTheDatabaseName() {
    QCOMPARE(ProposedPath("/d", "Inventory"), std::string("/d/Inventory.PDB"));
    // 8-bit names become UTF-8 file names; path separators cannot sneak in.
    QCOMPARE(ProposedPath("/d", "Caf\xE9/Bar"), std::string("/d/Caf\xC3\xA9_Bar.PDB"));
    QCOMPARE(ProposedPath("/d", ""), std::string("/d/Untitled.PDB"));
  }

  void preferencesDefaultsAndStrings() {
    test::MemorySettings s;
    Preferences p = ReadPreferences(s);
    QVERIFY(p.auto_save && p.auto_sip && p.allow_checks);
    QVERIFY(!p.allow_popups && !p.allow_date_time);
    s.values["AutoSave"] = "0";
    s.values["AllowPopups"] = "1";
    s.values["AllowChecks"] = "";  // unreadable: the default stays
    p = ReadPreferences(s);
    QVERIFY(!p.auto_save && p.allow_popups && p.allow_checks);
    p.allow_date_time = true;
    WritePreferences(s, p);
    QCOMPARE(s.values.at("AutoSave"), std::string("0"));
    QCOMPARE(s.values.at("AllowDateTime"), std::string("1"));
    QCOMPARE(s.values.at("AutoSIP"), std::string("1"));
  }

  void launchTexts() {
    LaunchRequest r = ParseLaunch({"AppRunToHandleNotification", "12"});
    QCOMPARE(r.kind, LaunchRequest::Notification);
    QCOMPARE(NotificationNumber(r.text), 12);
    QCOMPARE(NotificationNumber("AppRunToHandleNotification"), 0);
    QCOMPARE(NotificationNumber("AppRunToHandleNotification 0"), 0);
    QCOMPARE(NotificationNumber("AppRunToHandleNotification x"), 0);
    r = ParseLaunch({"/home/u/My Stuff.PDB"});
    QCOMPARE(r.kind, LaunchRequest::OpenFile);
    QCOMPARE(ParseLaunchText(LaunchText(r)).path, std::string("/home/u/My Stuff.PDB"));
    QCOMPARE(ParseLaunch({}).kind, LaunchRequest::Nothing);
    QCOMPARE(ParseLaunchText("").kind, LaunchRequest::Nothing);
  }

  void handOffFraming() {
    QByteArray buffer = FrameMessage("AppRunToHandleNotification 3") + FrameMessage("/x.PDB");
    QByteArray partial = buffer.left(10);
    bool bad = false;
    QVERIFY(!TakeMessage(partial, bad));
    QVERIFY(!bad);
    QCOMPARE(*TakeMessage(buffer, bad), QString("AppRunToHandleNotification 3"));
    QCOMPARE(*TakeMessage(buffer, bad), QString("/x.PDB"));
    QVERIFY(buffer.isEmpty());
    // A length past the limit is refused before anything is read or allocated.
    QByteArray huge("\x7f\xff\xff\xff", 4);
    QVERIFY(!TakeMessage(huge, bad));
    QVERIFY(bad);
  }

  void columnWidthsAndListTypes() {
    QCOMPARE(StoredWidth(100), 66u);
    QCOMPARE(ShownWidth(66), 99);
    QCOMPARE(ShownWidth(58), 87);
    QCOMPARE(StoredWidth(-5), 0u);
    auto db = test::DatabaseBuilder("T")
                  .Field("A", kText)
                  .Field("Pic", kImage)
                  .Field("B", kInteger)
                  .Field("H", kHeading)
                  .Field("X", kExternal)
                  .Field("L", kLink)
                  .Build();
    // Display order: B before A.
    db->definition().set_display_slot(0, 2);
    db->definition().set_display_slot(2, 0);
    auto columns = ListColumns(db->definition());
    QCOMPARE(columns.size(), std::size_t{2});
    QCOMPARE(columns[0].slot, 2);
    QCOMPARE(columns[1].slot, 0);
    HideField(db->definition(), 2);
    QCOMPARE(ListColumns(db->definition()).size(), std::size_t{1});
    // A damaged order table naming a slot twice shows it once.
    db->definition().set_display_slot(1, 0);
    QCOMPARE(ListColumns(db->definition()).size(), std::size_t{1});
  }

  void typeAheadLimitAndUndo() {
    auto db = test::SampleDatabase();
    std::vector<std::string> seen;
    TypeAhead search;
    TypeAhead::Matcher prefix = [&](std::uint32_t n, const std::string& text) {
      seen.push_back(text);
      std::string v = RecordValueText(*db, n, 0, {});
      return v.compare(0, text.size(), text) == 0;
    };
    QCOMPARE(*search.Type('A', *db, prefix), 0u);  // lower-cased before matching
    QCOMPARE(seen.back(), std::string("a"));
    QCOMPARE(*search.Type('p', *db, prefix), 0u);
    QCOMPARE(*search.Type('r', *db, prefix), 3u);  // "apr" first matches apricot
    QVERIFY(!search.Type('z', *db, prefix));       // no match: the z is taken back
    QCOMPARE(search.text(), std::string("Apr"));
    QCOMPARE(*search.Backspace(*db, prefix), 0u);
    search.Clear();
    TypeAhead::Matcher any = [](std::uint32_t, const std::string&) { return true; };
    for (int i = 0; i < 29; ++i) QVERIFY(search.Type('x', *db, any));
    QVERIFY(!search.Type('y', *db, any));
    QCOMPARE(search.text().size(), std::size_t{29});
  }

  void deleteWithinOutsideAndAll() {
    auto db = test::SampleDatabase();
    test::ScriptedPrompter prompter;
    db->visible = {1, 3};  // as a filter would leave them
    db->current = 2;
    QCOMPARE(DeleteRecordSet(*db, DeleteScope::OutsideFilter, prompter), 2u);
    QCOMPARE(RecordValueText(*db, 0, 0, {}), std::string("banana"));
    QCOMPARE(RecordValueText(*db, 1, 0, {}), std::string("apricot"));
    QVERIFY(db->changed);
    QCOMPARE(db->current, 0u);  // the record before the deleted current one
    db->visible = {1};
    QCOMPARE(DeleteRecordSet(*db, DeleteScope::WithinFilter, prompter), 1u);
    QCOMPARE(db->count(), 1u);
    QCOMPARE(DeleteRecordSet(*db, DeleteScope::All, prompter), 1u);
    QCOMPARE(db->count(), 0u);
    QVERIFY(db->visible.empty());
  }

  void titleAndCounts() {
    test::MemorySettings settings;
    test::FixedClock clock;
    test::ScriptedPrompter prompter;
    Workspace ws(prompter, settings, clock);
    QCOMPARE(WindowTitle(ws), std::string("Quorvant"));
    ws.ReplaceCurrent(test::SampleDatabase("Caf\xE9"));
    ws.current().visible = {0, 2};
    QCOMPARE(WindowTitle(ws), std::string("Caf\xC3\xA9 (2/4)"));
    QCOMPARE(RecordCountText(ws), std::string("2 of 4 records"));
    ws.current().changed = true;
    QCOMPARE(WindowTitle(ws), std::string("Caf\xC3\xA9* (2/4)"));
  }
};

QTEST_GUILESS_MAIN(AppRulesTest)
#include "app_rules_test.moc"
