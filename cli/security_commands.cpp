// qvdb encrypt, decrypt, security.

#include <algorithm>
#include <iostream>
#include <set>

#include "cli/cli_context.h"
#include "cli/command.h"
#include "engine/text.h"
#include "security/access.h"
#include "security/database_crypt.h"
#include "security/protected_open.h"
#include "security/record_header.h"
#include "security/settings.h"

namespace qv::cli {

namespace {

// Marks the named fields for encryption; false (reported) for a name that is not a field.
bool MarkFields(CliContext& context, Database& db, const QStringList& names, bool& marked_new) {
  for (const QString& name : names) {
    auto slot = db.definition().FindField(Utf8ToCp1252(name.toStdString()));
    if (!slot) {
      context.Error("no field named '" + name.toStdString() + "'");
      return false;
    }
    FieldDefinition field = db.definition().field(*slot);
    if (!field.encrypted()) marked_new = true;
    field.set_encrypted(true);
  }
  return true;
}

// Marks records (numbers from 1) for manual encryption.
bool MarkRecords(CliContext& context, Database& db, const QStringList& numbers) {
  EnableRecordHeaders(db);
  for (const QString& text : numbers) {
    bool ok = false;
    uint n = text.toUInt(&ok);
    if (!ok || n == 0 || n > db.count()) {
      context.Error("no record " + text.toStdString());
      return false;
    }
    Bytes& record = db.records[n - 1].data;
    auto header = ReadRecordHeader(record);
    if (!header) continue;
    header->set(kRecordManualEncrypt, true);
    WriteRecordHeader(record, *header);
  }
  db.changed = true;
  return true;
}

int Encrypt(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption(
      {"mode", "0 whole records, 1 marked fields, 2 marked fields of marked records.", "mode"});
  parser.addOption({"field", "Mark a field for encryption; repeat for more.", "name"});
  parser.addOption({"record", "Mark a record (from 1) for manual encryption (mode 2).", "number"});
  const char* usage = "encrypt FILE [--mode 0|1|2] [--field NAME ...] [--record N ...]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  int current = GetEncryptionMode(db->definition());
  int mode = current == kEncryptionDisabled ? kEncryptEntireDatabase : current;
  if (parser.isSet("mode")) {
    bool ok = false;
    mode = parser.value("mode").toInt(&ok);
    if (!ok || mode < 0 || mode > 2) {
      return context.UsageError("the mode is 0, 1 or 2, not '" +
                                parser.value("mode").toStdString() + "'");
    }
  }
  bool marked_new = false;
  if (!MarkFields(context, *db, parser.values("field"), marked_new)) return kFailed;
  // Records enciphered under one mode and one set of fields can only be read back under them.
  if (AnyRecordEnciphered(*db) && (mode != current || marked_new)) {
    context.Error("records are enciphered under the present settings: run qvdb decrypt first");
    return kFailed;
  }
  if (mode != kEncryptEntireDatabase && !AnyFieldMarked(db->definition())) {
    return context.UsageError("no field is marked for encryption (name one with --field)");
  }
  SetEncryptionMode(db->definition(), mode);
  if (parser.isSet("record") && !MarkRecords(context, *db, parser.values("record"))) return kFailed;
  if (!EncryptDatabaseWithPrompt(*db, context.ui)) {
    context.Error("nothing was saved: no password was given");
    return kFailed;
  }
  db->changed = true;
  if (!context.Save(*db)) return kFailed;
  std::cout << "enciphered: " << EncryptionModeLabel(mode) << '\n';
  return kOk;
}

int Decrypt(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  if (!context.Parse(parser, arguments, 1, "decrypt FILE")) return kUsage;
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  DatabaseDefinition& definition = db->definition();
  int mode = GetEncryptionMode(definition);
  // Mode 0 bodies were deciphered as the database opened.
  if (mode != kEncryptEntireDatabase && AnyRecordEnciphered(*db)) {
    if (mode == kEncryptionDisabled) {
      context.Error(
          "records are enciphered but encryption is disabled; enable it with qvdb encrypt first");
      return kFailed;
    }
    if (DecryptDatabaseWithPrompt(*db, true, context.ui) != 1) {
      context.Error("nothing was saved: not every record could be deciphered with that password");
      return kFailed;
    }
  }
  SetEncryptionMode(definition, kEncryptionDisabled);
  SetDatabaseEnciphered(definition, false);
  SetVerifier(definition, Verifier{});
  for (int slot = 0; slot < kFieldSlots; ++slot) definition.field(slot).set_encrypted(false);
  db->changed = true;
  if (!context.Save(*db)) return kFailed;
  std::cout << "deciphered; encryption is disabled\n";
  return kOk;
}

void ShowSecurity(const Database& db) {
  const DatabaseDefinition& definition = db.definition();
  for (int action = 0; action < kAccessActions; ++action) {
    std::string label = std::string(AccessActionLabel(action)) + ":";
    label.resize(20, ' ');
    std::cout << label << AccessValueLabel(GetAccess(definition, action)) << '\n';
  }
  std::cout << "Access password:    " << (GetAccessPassword(definition).empty() ? "not set" : "set")
            << "\nEncryption:         " << EncryptionModeLabel(GetEncryptionMode(definition))
            << "\nMarked fields:      ";
  std::string fields;
  for (int slot = 0; slot < kFieldSlots; ++slot) {
    ConstFieldDefinition f = definition.field(slot);
    if (f.used() && f.encrypted()) fields += (fields.empty() ? "" : ", ") + Cp1252ToUtf8(f.name());
  }
  // As the file holds them: records deciphered in memory for this command count too.
  std::size_t enciphered = 0;
  for (const RecordSlot& r : db.records) {
    auto header = ReadRecordHeader(r.data);
    bool deciphered = std::find(db.encipher_on_save.begin(), db.encipher_on_save.end(), r.uid) !=
                      db.encipher_on_save.end();
    if ((header && header->has(kRecordFieldsEnciphered)) || deciphered) ++enciphered;
  }
  std::cout << (fields.empty() ? "none" : fields) << "\nEnciphered records: " << enciphered
            << " of " << db.count() << '\n';
}

// "ACTION=VALUE" with the dialog's labels, case ignored.
bool ApplyAccess(CliContext& context, Database& db, const QString& text) {
  qsizetype eq = text.indexOf('=');
  auto action = AccessActionByLabel(text.left(eq).trimmed().toStdString());
  auto value = eq > 0 ? AccessValueByLabel(text.mid(eq + 1).trimmed().toStdString()) : std::nullopt;
  if (eq <= 0 || !action || !value) {
    context.Error(
        "expected ACTION=VALUE with the dialog's labels, for example \"Open Database=Password "
        "Required\", not '" +
        text.toStdString() + "'");
    return false;
  }
  if (*value == kViewRecordsOnly && *action != kEditRecords) {
    context.Error("View Records Only is offered for Edit Records only");
    return false;
  }
  SetAccess(db.definition(), *action, *value);
  db.changed = true;
  return true;
}

int Security(CliContext& context, const QStringList& arguments) {
  QCommandLineParser parser;
  parser.addPositionalArgument("FILE", "Database file.");
  parser.addOption({"show", "Show the access permissions and encryption settings."});
  parser.addOption({"set", "Set one action's access, ACTION=VALUE; repeat for more.", "rule"});
  parser.addOption({"access-password", "Set the access password (asked for, never an argument)."});
  const char* usage = "security FILE [--show] [--set ACTION=VALUE ...] [--access-password]";
  if (!context.Parse(parser, arguments, 1, usage)) return kUsage;
  bool changing = parser.isSet("set") || parser.isSet("access-password");
  if (!changing && !parser.isSet("show")) {
    return context.UsageError("");
  }
  auto db = context.Open(parser.positionalArguments().at(0).toStdString());
  if (!db) return kFailed;
  for (const QString& rule : parser.values("set"))
    if (!ApplyAccess(context, *db, rule)) return kFailed;
  if (parser.isSet("access-password")) {
    if (!ChangeAccessPassword(db->definition(), context.ui)) {
      context.Error("the access password was not changed");
      return kFailed;
    }
    db->changed = true;
  }
  if (changing && !context.Save(*db)) return kFailed;
  if (parser.isSet("show")) ShowSecurity(*db);
  return kOk;
}

}  // namespace

std::vector<Command> SecurityCommands() {
  return {
      {"encrypt", "encrypt FILE [--mode 0|1|2] [--field NAME ...] [--record N ...]", Encrypt,
       "Enciphers the database under a password asked for: mode 0 whole records, 1 the marked "
       "fields, 2 the marked fields of marked records.",
       "encrypt Diary.PDB --mode 1 --field Entry --password-file key.txt"},
      {"decrypt", "decrypt FILE", Decrypt, "Deciphers every record and switches encryption off.",
       "decrypt Diary.PDB --password-file key.txt"},
      {"security", "security FILE [--show] [--set ACTION=VALUE ...] [--access-password]", Security,
       "Shows or sets who may do what (the access permissions) and the access password.",
       "security Stock.PDB --set \"Delete Records=Password Required\" --access-password"},
  };
}

}  // namespace qv::cli
