#include "processing/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "processing/formula.h"
#include "processing/formula_builder.h"
#include "tests/processing/fixtures.h"
#include "tests/support/builders.h"
#include "tests/support/scripted_prompter.h"

namespace qv::test {
namespace {

Bytes Linked(std::string_view text) {
  Bytes v(24, 0);
  v.insert(v.end(), text.begin(), text.end());
  v.push_back(0);
  return v;
}

TEST(CanSortOnFieldTest, RefusalsInOrderWithTheFieldsName) {
  auto db = DatabaseBuilder().Field("Secret", kImage).Field("Photo", kImage)
                .Field("Running", kCalculated).Field("Rel", kRelationship).Field("Total", kCalculated)
                .Build();
  db->definition().field(0).set_encrypted(true);
  db->definition().field(2).bytes()[10] = 1;
  ScriptedPrompter p;
  EXPECT_FALSE(CanSortOnField(*db, 0, true, p));
  EXPECT_FALSE(CanSortOnField(*db, 1, true, p));
  EXPECT_FALSE(CanSortOnField(*db, 2, true, p));
  EXPECT_FALSE(CanSortOnField(*db, 7, true, p));  // Not-Used
  EXPECT_EQ(p.Messages(),
            (std::vector<std::string>{
                "This field (Secret) is flagged for encrypted, and therefore cannot be sorted!",
                "This type of field (Photo) cannot currently be sorted!",
                "Since this field (Running) references other records, it's value is relative to "
                "it's position, meaning that it cannot be the basis for a sort!",
                "This type of field (Field 8) cannot currently be sorted!"}));
  p.Clear();
  EXPECT_TRUE(CanSortOnField(*db, 3, true, p));  // a Relationship passes, though it sorts nothing
  EXPECT_TRUE(CanSortOnField(*db, 4, true, p));
  EXPECT_FALSE(CanSortOnField(*db, 1, false, p));
  EXPECT_FALSE(CanSortOnField(*db, 250, true, p));
  EXPECT_EQ(p.Messages().size(), 1u);
}

TEST(CompareFieldTest, TextsIgnoreCaseAndIntegersUseTheWrappingDifference) {
  auto db = DatabaseBuilder().Field("Name", kText).Field("N", kInteger)
                .Row({"apple", "2000000000"}).Row({"Banana", "-2000000000"}).Build();
  const Bytes& a = db->records[0].data;
  const Bytes& b = db->records[1].data;
  EXPECT_LT(CompareField(*db, a, b, 0, true), 0);
  EXPECT_GT(CompareField(*db, a, b, 0, false), 0);
  // 2e9 - (-2e9) wraps to a negative number: 2,000,000,000 sorts first, forward.
  EXPECT_LT(CompareField(*db, a, b, 1, true), 0);
  db->definition().set_sort_key(0, SortKey{1, true});
  ScriptedPrompter p;
  SortDatabase(*db, true, p);
  EXPECT_EQ(Ints(*db, 1), (std::vector<std::int32_t>{2000000000, -2000000000}));
}

TEST(CompareFieldTest, ShortLinkedValuesGoFirstForwardAndLastReverse) {
  auto db = DatabaseBuilder().Field("Owner", kLinked).Build();
  AddRaw(*db, {{0, Linked("beta")}});
  AddRaw(*db, {{0, Bytes(5, 0)}});
  AddRaw(*db, {{0, Linked("Alpha")}});
  db->definition().set_sort_key(0, SortKey{0, true});
  ScriptedPrompter p;
  SortDatabase(*db, false, p);
  auto shown = [&] {
    std::vector<std::string> out;
    for (auto& r : db->records) {
      auto v = ValueBytes(r.data, 0);
      out.push_back(v.size() < 25 ? "-" : std::string(ValueText(v.subspan(24))));
    }
    return out;
  };
  EXPECT_EQ(shown(), (std::vector<std::string>{"-", "Alpha", "beta"}));
  db->definition().set_sort_key(0, SortKey{0, false});
  SortDatabase(*db, false, p);
  EXPECT_EQ(shown(), (std::vector<std::string>{"beta", "Alpha", "-"}));
}

TEST(CompareFieldTest, CalculatedByResultKind) {
  auto db = DatabaseBuilder().Field("C", kCalculated).Build();
  AddRaw(*db, {{0, TextValue("10")}});
  AddRaw(*db, {{0, TextValue("9")}});
  AddRaw(*db, {{0, TextValue("1e1")}});
  const Bytes &ten = db->records[0].data, &nine = db->records[1].data, &e1 = db->records[2].data;
  for (int kind : {1, 2, 3}) {
    db->definition().field(0).bytes()[43] = static_cast<std::uint8_t>(kind);
    EXPECT_GT(CompareField(*db, ten, nine, 0, true), 0) << kind;  // 9 before 10
    EXPECT_LT(CompareField(*db, e1, ten, 0, true), 0) << kind;    // atol("1e1") is 1
  }
  db->definition().field(0).bytes()[43] = 0;
  EXPECT_GT(CompareField(*db, ten, nine, 0, true), 0);
  EXPECT_EQ(CompareField(*db, e1, ten, 0, true), 0);
  // Unknown kinds answer B's length whichever way round, even for equal values.
  db->definition().field(0).bytes()[43] = 9;
  EXPECT_EQ(CompareField(*db, ten, nine, 0, true), 2);
  EXPECT_EQ(CompareField(*db, nine, ten, 0, false), 3);
  db->definition().field(0).bytes()[43] = 0xFF;  // -1
  EXPECT_EQ(CompareField(*db, ten, ten, 0, true), 3);
}

TEST(CompareFieldTest, PopUpsByFirstByteOrByTextWithSortPopups) {
  auto db = DatabaseBuilder().Field("Colour", kPopUp).Items({"apple", "Blue"})
                .Row({"apple"}).Row({"Blue"}).Build();
  const Bytes &apple = db->records[0].data, &blue = db->records[1].data;
  EXPECT_GT(CompareField(*db, apple, blue, 0, true), 0);  // 'a' (97) after 'B' (66)
  SetSortPopups(db->definition().field(0), true);
  EXPECT_TRUE(SortPopups(db->definition().field(0)));
  EXPECT_LT(CompareField(*db, apple, blue, 0, true), 0);
}

TEST(CompareFieldTest, MissingValuesAndOddCodes) {
  auto db = DatabaseBuilder().Field("Name", kText).Row({"x"}).Build();
  Bytes none{0, 0xFF, 0xFF};  // no values at all
  EXPECT_EQ(CompareField(*db, none, db->records[0].data, 0, true), -1);
  EXPECT_EQ(CompareField(*db, none, db->records[0].data, 0, false), -1);
  EXPECT_EQ(CompareField(*db, db->records[0].data, none, 0, false), 1);
  db->definition().field(0).set_type(40);  // no such type: B's length
  EXPECT_EQ(CompareField(*db, db->records[0].data, db->records[0].data, 0, true), 2);
}

// The quicksort written out step by step on (key, id) pairs, as the reference for which order
// equal records are left in.
std::vector<int> ReferenceQuicksort(std::vector<std::pair<std::int32_t, int>> v) {
  auto cmp = [](const auto& x, const auto& y) {
    auto d = static_cast<std::int32_t>(static_cast<std::uint32_t>(x.first) -
                                       static_cast<std::uint32_t>(y.first));
    return d < 0 ? -1 : (d > 0 ? 1 : 0);
  };
  std::vector<std::pair<int, int>> pending;
  int low = 0, high = static_cast<int>(v.size()) - 1;
  for (;;) {
    while (high > low) {
      int mid = (low + high) / 2;
      if (cmp(v[low], v[mid]) > 0) std::swap(v[low], v[mid]);
      if (cmp(v[low], v[high]) > 0) std::swap(v[low], v[high]);
      if (cmp(v[mid], v[high]) > 0) std::swap(v[mid], v[high]);
      if (high - low < 3) break;
      auto pivot = v[mid];
      std::swap(v[mid], v[high - 1]);
      int i = low, j = high - 1;
      for (;;) {
        do ++i;
        while (cmp(v[i], pivot) < 0);
        do --j;
        while (cmp(v[j], pivot) > 0);
        if (j < i) break;
        std::swap(v[i], v[j]);
      }
      std::swap(v[i], v[high - 1]);
      if (j - low <= high - i) {
        pending.push_back({i + 1, high});
        high = j;
      } else {
        pending.push_back({low, j});
        low = i + 1;
      }
    }
    if (pending.empty()) break;
    low = pending.back().first;
    high = pending.back().second;
    pending.pop_back();
  }
  std::vector<int> ids;
  for (auto& [key, id] : v) ids.push_back(id);
  return ids;
}

TEST(SortDatabaseTest, EqualRecordsEndWhereTheQuicksortLeavesThem) {
  auto db = DatabaseBuilder().Field("Key", kInteger).Field("Id", kInteger).Build();
  std::mt19937 random(42);
  std::vector<std::pair<std::int32_t, int>> pairs;
  for (int id = 0; id < 5000; ++id) {
    auto key = static_cast<std::int32_t>(random() % 17);
    pairs.push_back({key, id});
    AddRaw(*db, {{0, Int32Value(key)}, {1, Int32Value(id)}});
  }
  std::vector<int> expected = ReferenceQuicksort(pairs);
  std::vector<std::pair<std::int32_t, int>> stable = pairs;
  std::stable_sort(stable.begin(), stable.end(),
                   [](auto& x, auto& y) { return x.first < y.first; });
  std::vector<int> stable_ids;
  for (auto& [key, id] : stable) stable_ids.push_back(id);
  ASSERT_NE(expected, stable_ids);  // the data does tell the two apart

  db->definition().set_sort_key(0, SortKey{0, true});
  ScriptedPrompter p;
  SortDatabase(*db, true, p);
  std::vector<std::int32_t> ids = Ints(*db, 1);
  EXPECT_EQ(std::vector<int>(ids.begin(), ids.end()), expected);
  EXPECT_TRUE(db->changed);
  EXPECT_FALSE(p.busy());
  EXPECT_EQ(db->visible.size(), 5000u);
}

TEST(SortDatabaseTest, ThreeKeysAndNothingWithoutAPrimaryKey) {
  auto db = DatabaseBuilder().Field("A", kText).Field("B", kInteger).Field("C", kText)
                .Row({"x", "2", "q"}).Row({"X", "1", "b"}).Row({"x", "1", "a"}).Row({"a", "9", "z"})
                .Build();
  ScriptedPrompter p;
  db->definition().set_sort_key(1, SortKey{1, true});  // a secondary key alone sorts nothing
  SortDatabase(*db, true, p);
  EXPECT_EQ(Texts(*db, 2), (std::vector<std::string>{"q", "b", "a", "z"}));
  EXPECT_FALSE(db->changed);
  EXPECT_EQ(db->visible.size(), 4u);  // the rebuild still happens

  db->definition().set_sort_key(0, SortKey{0, true});
  db->definition().set_sort_key(1, SortKey{1, false});
  db->definition().set_sort_key(2, SortKey{2, true});
  SortDatabase(*db, false, p);
  EXPECT_EQ(Texts(*db, 2), (std::vector<std::string>{"z", "q", "a", "b"}));
}

TEST(SortDatabaseTest, DamagedKeysSortNothingAndUnusedSlotsCompareEqual) {
  auto db = DatabaseBuilder().Field("N", kInteger).Row({"3"}).Row({"1"}).Row({"2"}).Build();
  ScriptedPrompter p;
  db->definition().data()[def::kSort] = 120;  // names no slot
  SortDatabase(*db, false, p);
  EXPECT_EQ(Ints(*db, 0), (std::vector<std::int32_t>{3, 1, 2}));
  EXPECT_EQ(CompareRecords(*db, 0, 1), 0);
  db->definition().set_sort_key(0, SortKey{50, true});  // unused slot, after the end marker
  SortDatabase(*db, false, p);  // every comparison says -1: must stay inside the table
  EXPECT_EQ(db->count(), 3u);
  std::vector<std::int32_t> after = Ints(*db, 0);
  std::sort(after.begin(), after.end());
  EXPECT_EQ(after, (std::vector<std::int32_t>{1, 2, 3}));
}

TEST(PlacementTest, NewRecordsGoAfterEqualOnesAndMovesShiftTheOthers) {
  auto db = DatabaseBuilder().Field("Key", kInteger).Field("Id", kInteger).Sort(0)
                .Row({"1", "0"}).Row({"2", "1"}).Row({"2", "2"}).Row({"3", "3"}).Build();
  AddRaw(*db, {{0, Int32Value(2)}, {1, Int32Value(4)}});
  EXPECT_EQ(FindInsertPosition(*db, 4), 3u);
  EXPECT_EQ(Ints(*db, 1), (std::vector<std::int32_t>{0, 1, 2, 4, 3}));

  // Record 0 edited to key 5 moves to the end; record at 4 edited to 0 moves to the front.
  RecordValues v = DecodeRecord(db->records[0].data);
  v.Set(0, Int32Value(5));
  db->records[0].data = EncodeRecord(db->definition(), v);
  EXPECT_EQ(RepositionRecord(*db, 0), 4u);
  v = DecodeRecord(db->records[2].data);
  v.Set(0, Int32Value(0));
  db->records[2].data = EncodeRecord(db->definition(), v);
  EXPECT_EQ(RepositionRecord(*db, 2), 0u);
  EXPECT_EQ(Ints(*db, 1), (std::vector<std::int32_t>{4, 1, 2, 3, 0}));
  EXPECT_EQ(RepositionRecord(*db, 4), 4u);  // last and greatest: stays

  MoveTableEntry(*db, 4, 1);
  EXPECT_EQ(Ints(*db, 1), (std::vector<std::int32_t>{4, 0, 1, 2, 3}));
  MoveTableEntry(*db, 1, 4);
  EXPECT_EQ(Ints(*db, 1), (std::vector<std::int32_t>{4, 1, 2, 0, 3}));
}

TEST(PlacementTest, WithoutAPrimaryKeyNothingIsCompared) {
  auto db = DatabaseBuilder().Field("Key", kInteger).Row({"5"}).Row({"9"}).Build();
  db->definition().set_sort_key(1, SortKey{0, true});  // secondary only
  AddRaw(*db, {{0, Int32Value(1)}});
  EXPECT_EQ(FindInsertPosition(*db, 2), 2u);
  EXPECT_EQ(RepositionRecord(*db, 0), 2u);  // moves to the end, deliberately
  EXPECT_EQ(Ints(*db, 0), (std::vector<std::int32_t>{9, 1, 5}));
  db->definition().set_sort_key(1, SortKey{});
  EXPECT_EQ(RepositionRecord(*db, 0), 0u);  // no key at all: stays
}

TEST(SortOnColumnTest, MakesTheFieldTheOnlyKeyAndRefreshesPositionValues) {
  auto db = DatabaseBuilder().Field("A", kInteger).Field("B", kText).Field("Row", kCalculated)
                .Sort(1).Sort(0).Row({"2", "x"}).Row({"9", "y"}).Row({"5", "z"}).Build();
  ScriptedPrompter p;
  ASSERT_TRUE(BuildFormula(db->definition(), 2, "P3 + 1", p));
  db->definition().field(2).bytes()[43] = 1;
  SortOnColumn(*db, 0, false, p);
  EXPECT_EQ(db->definition().sort_key(0).field, 0);
  EXPECT_FALSE(db->definition().sort_key(0).forward);
  EXPECT_EQ(db->definition().sort_key(1).field, -1);
  EXPECT_EQ(Ints(*db, 0), (std::vector<std::int32_t>{9, 5, 2}));
  EXPECT_EQ(Texts(*db, 2), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_TRUE(db->redraw);
  EXPECT_EQ(db->visible.size(), 3u);
}

TEST(SortDialogTest, TertiaryDirectionComesFromThePrimaryButton) {
  auto db = DatabaseBuilder().Field("A", kText).Field("B", kText).Field("C", kText)
                .Field("Pic", kImage).Build();
  ScriptedPrompter p;
  SortDialogState state;
  state.field = {0, 1, 2};
  state.forward = {true, false, false};
  ASSERT_TRUE(StoreSortDialog(*db, state, -1, p));
  EXPECT_TRUE(db->definition().sort_key(0).forward);
  EXPECT_FALSE(db->definition().sort_key(1).forward);
  EXPECT_TRUE(db->definition().sort_key(2).forward);

  state.field = {1, -1, 0};
  state.forward = {false, true, true};
  ASSERT_TRUE(StoreSortDialog(*db, state, 3, p));  // into view 3's entries
  const std::uint8_t* entries = db->definition().view_block(3) + 1136;
  EXPECT_EQ(std::vector<int>(entries, entries + 6), (std::vector<int>{1, 0, 0xFF, 1, 0, 0}));
  EXPECT_EQ(db->definition().sort_key(0).field, 0);  // the current settings stay

  state.field = {0, 3, 1};
  EXPECT_FALSE(StoreSortDialog(*db, state, -1, p));
  EXPECT_EQ(p.Messages(), (std::vector<std::string>{
                              "This type of field (Pic) cannot currently be sorted!"}));
  EXPECT_EQ(db->definition().sort_key(1).field, 1);  // nothing stored
}

}  // namespace
}  // namespace qv::test
