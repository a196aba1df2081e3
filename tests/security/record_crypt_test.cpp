#include "security/record_crypt.h"

#include <gtest/gtest.h>

#include "security/cfb.h"
#include "security/database_crypt.h"
#include "tests/security/crypt_fixture.h"

namespace qv::test {
namespace {

TEST(RecordHeaders, SwitchingOnKeepsValuesAndGivesEachRecordAnIdentity) {
  auto db = DatabaseBuilder("H").Field("Name", kText).Field("Qty", kInteger).Build();
  StoreRecord(*db, ValuesFromTexts(*db, {{0, "one"}, {1, "1"}}), kNewRecord);
  StoreRecord(*db, ValuesFromTexts(*db, {{0, "two"}, {1, "2"}}), kNewRecord);
  EnableRecordHeaders(*db);
  EXPECT_TRUE(db->definition().record_header_on());
  EXPECT_TRUE(db->changed);
  for (std::uint32_t i = 0; i < 2; ++i) {
    const Bytes& r = db->records[i].data;
    ASSERT_GE(r.size(), 23u);
    EXPECT_EQ(r[0], 22);
    EXPECT_EQ(FlagsOf(*db, i), 0);
    EXPECT_EQ(r[21], 0);  // checksum
  }
  EXPECT_EQ(Column(*db, 0), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(Column(*db, 1), (std::vector<std::string>{"1", "2"}));
  EXPECT_NE(Bytes(db->records[0].data.begin() + 1, db->records[0].data.begin() + 9),
            Bytes(db->records[1].data.begin() + 1, db->records[1].data.begin() + 9));
}

TEST(RecordBody, ShortRecordsStayPlainAndThe24thByteIsTheFirstEnciphered) {
  auto db = SecretsDatabase(0);
  ExpandedKey key = MakeKey("body");
  Bytes header(23, 0);
  header[0] = 22;
  db->records.push_back({header, 200, 0});
  Bytes longer = header;
  longer.push_back(0x5A);
  db->records.push_back({longer, 201, 0});
  EXPECT_FALSE(EncryptRecordBody(*db, 0, key));
  EXPECT_EQ(db->records[0].data, header);
  ASSERT_TRUE(EncryptRecordBody(*db, 1, key));
  const Bytes& enciphered = db->records[1].data;
  ASSERT_EQ(enciphered.size(), 24u);
  EXPECT_NE(enciphered[23], 0x5A);
  EXPECT_EQ(enciphered[12], kRecordBodyEnciphered);
  for (std::size_t i = 0; i < 23; ++i) {
    if (i != 12) {
      EXPECT_EQ(enciphered[i], longer[i]) << i;
    }
  }
  EXPECT_FALSE(EncryptRecordBody(*db, 1, key));  // never twice
  ASSERT_TRUE(DecryptRecordBody(*db, 1, key));
  EXPECT_EQ(db->records[1].data, longer);
  EXPECT_FALSE(DecryptRecordBody(*db, 1, key));
}

TEST(RecordFields, ValuesAreReframedAndTheChecksumIsThePlaintextSum) {
  auto db = SecretsDatabase(1);
  MarkAll(*db);
  Bytes record = db->records[0].data;
  Bytes plain = record;
  ExpandedKey key = MakeKey("fields");
  ASSERT_EQ(EncipherMarkedFields(db->definition(), record, key), 6);

  auto name = ValueBytes(record, kName);  // "name 0": one length byte, then 6 enciphered
  ASSERT_EQ(name.size(), 7u);
  EXPECT_EQ(name[0], 6);
  Bytes expect_name = {'n', 'a', 'm', 'e', ' ', '0'};
  CfbEncrypt(expect_name.data(), expect_name.size(), key);
  EXPECT_TRUE(std::equal(expect_name.begin(), expect_name.end(), name.begin() + 1));

  std::string memo_text = "a longer note for record 0";
  auto memo = ValueBytes(record, kMemo);
  ASSERT_EQ(memo.size(), memo_text.size() + 2);
  EXPECT_EQ(GetLE16(memo.data()), memo_text.size());

  auto linked = ValueBytes(record, kLinkedText);  // 24-byte block, a length byte, the text
  ASSERT_EQ(linked.size(), 24u + 1 + 8);
  EXPECT_EQ(linked[24], 8);

  EXPECT_EQ(ValueBytes(record, kQty).size(), 4u);
  auto sketch = ValueBytes(record, kSketch);
  ASSERT_EQ(sketch.size(), 2001u);
  EXPECT_EQ(sketch[0], 1);  // byte 0 stays plain
  EXPECT_NE(Bytes(sketch.begin(), sketch.end()), ImageValue(true));

  unsigned sum = 0;
  for (int slot : {kName, kMemo, kPrice}) {
    std::string_view text = ValueText(ValueBytes(plain, slot));
    for (char c : text) sum += static_cast<std::uint8_t>(c);
  }
  for (std::uint8_t b : ValueBytes(plain, kQty)) sum += b;
  for (std::uint8_t b : ImageValue(true)) sum += b;
  for (std::uint8_t b : LinkedValue("linked 0")) sum += b;  // its NUL adds nothing
  auto header = ReadRecordHeader(record);
  EXPECT_EQ(header->checksum(), static_cast<std::uint8_t>(sum));
  EXPECT_TRUE(header->has(kRecordFieldsEnciphered));

  EXPECT_EQ(EncipherMarkedFields(db->definition(), record, key), 0);  // never twice
  ASSERT_EQ(DecryptRecordFields(db->definition(), record, key), 1);
  plain[21] = static_cast<std::uint8_t>(sum);  // the checksum stays behind; only the flag goes
  EXPECT_EQ(record, plain);
}

TEST(RecordFields, AnEmptyImageStaysPlainAndEqualRecordsEncipherAlike) {
  auto db = SecretsDatabase(3);
  db->definition().field(kSketch).set_encrypted(true);
  db->definition().field(kName).set_encrypted(true);
  ExpandedKey key = MakeKey("same");
  for (std::uint32_t i = 0; i < 3; ++i)
    EncipherMarkedFields(db->definition(), db->records[i].data.edit(), key);
  auto empty_image = ValueBytes(db->records[1].data, kSketch);
  EXPECT_EQ(Bytes(empty_image.begin(), empty_image.end()), ImageValue(false));
  // Records 0 and 2 hold the same name and the same image.
  EXPECT_EQ(Bytes(ValueBytes(db->records[0].data, kName).begin(),
                  ValueBytes(db->records[0].data, kName).end()),
            Bytes(ValueBytes(db->records[2].data, kName).begin(),
                  ValueBytes(db->records[2].data, kName).end()));
  EXPECT_EQ(db->records[0].data[21], db->records[2].data[21]);
}

TEST(RecordFields, AWrongPasswordOrMissingHeaderChangesNothing) {
  auto db = SecretsDatabase(1);
  MarkAll(*db);
  Bytes record = db->records[0].data;
  EncipherMarkedFields(db->definition(), record, MakeKey("right"));
  Bytes enciphered = record;
  EXPECT_EQ(DecryptRecordFields(db->definition(), record, MakeKey("wrong")), 0);
  EXPECT_EQ(record, enciphered);
  Bytes no_header = {0, 3, 0, 'a', 'b', 0};
  EXPECT_EQ(DecryptRecordFields(db->definition(), no_header, MakeKey("right")), -1);
  EXPECT_EQ(EncipherMarkedFields(db->definition(), no_header, MakeKey("right")), 0);
  EXPECT_EQ(no_header, (Bytes{0, 3, 0, 'a', 'b', 0}));
}

TEST(RecordFields, EncryptRecordFieldsWritesAVerifier) {
  auto db = SecretsDatabase(1);
  Bytes record = db->records[0].data;
  EXPECT_FALSE(EncryptRecordFields(db->definition(), record, "pw"));  // nothing marked
  EXPECT_EQ(record, db->records[0].data);
  db->definition().field(kName).set_encrypted(true);
  EXPECT_TRUE(EncryptRecordFields(db->definition(), record, "pw"));
  EXPECT_TRUE(CheckVerifier(db->definition(), "pw"));
}

}  // namespace
}  // namespace qv::test
