#include "exchange/beam_receive.h"

#include <cstdio>
#include <filesystem>

#include "engine/text.h"
#include "exchange/sync_databases.h"
#include "processing/recalc.h"
#include "processing/sort.h"

namespace qv {

namespace {

std::size_t Get16(const Bytes& bytes, std::size_t at) {
  return static_cast<std::size_t>(bytes[at]) << 8 | bytes[at + 1];
}

// The records of a multi-record body; nothing when a length runs past the end.
std::optional<std::vector<Bytes>> SplitRecords(const Bytes& body) {
  if (body.size() < 2) return std::nullopt;
  std::size_t count = Get16(body, 0);
  std::vector<Bytes> records;
  std::size_t at = 2;
  for (std::size_t i = 0; i < count; ++i) {
    if (body.size() - at < 2) return std::nullopt;
    std::size_t length = Get16(body, at);
    at += 2;
    if (body.size() - at < length) return std::nullopt;
    records.emplace_back(body.begin() + at, body.begin() + at + length);
    at += length;
  }
  return records;
}

std::optional<std::string> FindTarget(const ReceiveHost& host, const std::string& name) {
  if (host.open && !host.open->unsaved())
    if (auto found = FindDatabaseByName(name, host.open->path)) return found;
  return FindDatabaseByName(name, host.data_folder + "/*");
}

bool SameFile(const Database* db, const std::string& path) {
  std::error_code ec;
  return db && !db->unsaved() && std::filesystem::equivalent(db->path, path, ec);
}

int InsertInto(ReceiveHost& host, Database& db, const std::vector<Bytes>& records) {
  if (db.count() + records.size() > kMaxDataRecords) {
    host.prompter.message("Unable to open Database to insert record!", "ERROR", Icon::Error);
    return 0;
  }
  for (const Bytes& data : records) db.records.push_back({data, TakeRecordUid(db), 0});
  db.changed = true;
  bool calculated = false;
  for (int slot = 0; slot < kFieldSlots; ++slot)
    calculated = calculated || db.definition().field(slot).type() == kCalculated;
  // Sorts when the database has a sort order, and brings calculated values up to date.
  if (calculated || EffectiveSortKey(db, 0).field >= 0)
    ResortAndRecalculate(db, host.prompter);
  else
    ShowAllRecords(db);
  return 1;
}

int StoreNew(ReceiveHost& host, const Bytes& image, const std::string& target, bool replace) {
  if (replace && SameFile(host.open, target)) {
    host.prompter.message(
        StringPrintf("File %s already exists and is open.  You must first close this database "
                     "before overwriting it",
                     target.c_str()),
        "Update", Icon::Exclamation);
    return 0;
  }
  if (WriteFileAtomically(target, image) != WriteResult::Written) {
    host.prompter.message(StringPrintf("%s: Error moving file - %d", "ReceivePDBFile", errno),
                          "Error", Icon::Error);
    return 0;
  }
  return 1;
}

int Merge(ReceiveHost& host, Database& received, const std::string& target) {
  std::unique_ptr<Database> opened;
  Database* existing = SameFile(host.open, target) ? host.open : nullptr;
  if (existing && host.allow_open && !host.allow_open(*existing)) return 0;
  if (!existing) {
    opened = host.open_database(target);
    if (!opened) return 0;
    existing = opened.get();
  }
  if (SyncDatabases(*existing, received) != 1) {
    host.prompter.message("The Databases are incompatible for Syncing- keeping existing database.",
                          "Update", Icon::Exclamation);
    return 0;
  }
  existing->changed = true;
  ShowAllRecords(*existing);
  if (opened) return host.save(*opened) ? 1 : 0;
  if (host.refresh) host.refresh();
  return 1;
}

}  // namespace

ObjectKind KindOfObject(const std::u16string& name) {
  for (const char16_t* ext : {u".QVM", u".qvm"})
    if (name.find(ext) != std::u16string::npos) return ObjectKind::Records;
  for (const char16_t* ext : {u".QVR", u".qvr"})
    if (name.find(ext) != std::u16string::npos) return ObjectKind::Record;
  return ObjectKind::DatabaseFile;
}

std::string RecordsDatabaseName(const std::u16string& name) {
  std::size_t end = name.size();
  for (const char16_t* ext : {u".QVM", u".qvm", u".QVR", u".qvr"})
    end = std::min(end, name.find(ext));
  return Utf16ToUtf8(name.substr(0, end));
}

bool SafeFileName(std::string_view name) {
  if (name.empty() || name.front() == '.' || name.find("..") != std::string_view::npos)
    return false;
  for (unsigned char c : name)
    if (c < 0x20 || c == 0x7F || c == '/' || c == '\\' || c == ':') return false;
  return true;
}

int InsertReceivedRecords(ReceiveHost& host, const ReceivedObject& object,
                          const std::string& temp_path) {
  auto answer = host.prompter.ask(
      StringPrintf("Do you want to accept the data: %s", Utf16ToUtf8(object.description).c_str()),
      "Accept?", Buttons::YesNo, Icon::Question);
  if (answer != Answer::Yes) return 0;
  const std::string utf8_name = RecordsDatabaseName(object.name);
  const std::string name = Utf8ToCp1252(utf8_name);
  std::optional<std::string> target;
  if (SafeFileName(utf8_name)) target = FindTarget(host, name);
  if (!target) {
    host.prompter.message(StringPrintf("Database %s not found on device, and must be present to "
                                       "receive records.",
                                       utf8_name.c_str()),
                          "Update", Icon::Exclamation);
    return 0;
  }
  auto body = ReadWholeFile(temp_path, kObexLargestObject);
  std::optional<std::vector<Bytes>> records;
  if (body && KindOfObject(object.name) == ObjectKind::Records)
    records = SplitRecords(*body);
  else if (body && !body->empty())
    records = std::vector<Bytes>{*body};
  if (!records) {
    host.prompter.message("Unable to open Database to insert record!", "ERROR", Icon::Error);
    return 0;
  }
  if (SameFile(host.open, *target)) {
    if (host.allow_open && !host.allow_open(*host.open)) {
      host.prompter.message("Unable to open Database to insert record!", "ERROR", Icon::Error);
      return 0;
    }
    int ok = InsertInto(host, *host.open, *records);
    if (ok && host.refresh) host.refresh();
    return ok;
  }
  auto db = host.open_database(*target);
  if (!db) {
    host.prompter.message("Unable to open Database to insert record!", "ERROR", Icon::Error);
    return 0;
  }
  return InsertInto(host, *db, *records) && host.save(*db) ? 1 : 0;
}

int ReceivePDBFile(ReceiveHost& host, const std::string& temp_path) {
  auto image = ReadWholeFile(temp_path, kObexLargestObject);
  auto received = std::make_unique<Database>();
  std::uint32_t bad = 0;
  if (!image || ParseDatabase(*image, *received, bad) != ReadError::None ||
      !received->header.IsQuorvant()) {
    host.prompter.message("File sent was not a Quorvant .PDB File", "Update", Icon::Exclamation);
    return 0;
  }
  const std::string name = Cp1252ToUtf8(received->header.Name());
  if (host.prompter.ask(StringPrintf("Do you want to accept the file: %s", name.c_str()), "Accept?",
                        Buttons::YesNo, Icon::Question) != Answer::Yes)
    return 0;
  if (!SafeFileName(name)) {
    host.prompter.message(StringPrintf("The received database's name \"%s\" cannot name a file; "
                                       "nothing was stored.",
                                       name.c_str()),
                          "Update", Icon::Exclamation);
    return 0;
  }
  const std::string target = host.data_folder + "/" + name + ".PDB";
  std::error_code ec;
  if (!std::filesystem::exists(target, ec)) return StoreNew(host, *image, target, false);
  auto choice = host.prompter.ask(
      StringPrintf("A database named %s is already here.\nYes: merge the received records into "
                   "it.\nNo: replace it with the received one.\nCancel: keep it as it is.",
                   name.c_str()),
      "Update", Buttons::YesNoCancel, Icon::Question);
  if (choice == Answer::Yes) return Merge(host, *received, target);
  if (choice == Answer::No) return StoreNew(host, *image, target, true);
  return 0;
}

int HandleReceivedObject(ReceiveHost& host, const ReceivedObject& object,
                         const std::string& temp_path) {
  int result = KindOfObject(object.name) == ObjectKind::DatabaseFile
                   ? ReceivePDBFile(host, temp_path)
                   : InsertReceivedRecords(host, object, temp_path);
  std::remove(temp_path.c_str());
  return result;
}

}  // namespace qv
