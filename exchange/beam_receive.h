#pragma once
// What is done with a received object: records inserted into the database they name, or a
// database file stored, replaced or merged.

#include <functional>
#include <memory>
#include <string>

#include "engine/database.h"
#include "exchange/obex_packet.h"

namespace qv {

enum class ObjectKind { Record, Records, DatabaseFile };

// By substring, as the other editions do: "a.QVR.PDB" is a record object.
ObjectKind KindOfObject(const std::u16string& name);
// The database name of a record object: the Name before its ".qvr"/".qvm".
std::string RecordsDatabaseName(const std::u16string& name);
// Whether a name from outside may name a file in the data folder: not empty, no separators,
// no "..", no control characters, not starting with '.'.
bool SafeFileName(std::string_view name);

// What receiving needs from the program around it.
struct ReceiveHost {
  Prompter& prompter;
  const Clock& clock;
  std::string data_folder;
  Database* open = nullptr;  // the database the user has open
  // Opens a database with the Open Database check; nothing when refused or failed (shown).
  std::function<std::unique_ptr<Database>(const std::string& path)> open_database;
  // Saves a database the receiving opened; false when it could not (shown).
  std::function<bool(Database&)> save;
  // The open database's list must be refreshed.
  std::function<void()> refresh;
  // The Open Database check on the database records go into when it is the open one (databases
  // opened here pass it in open_database); false when refused (shown).
  std::function<bool(Database&)> allow_open;
};

// Inserts the one or several records in the receive file. 1 when inserted.
int InsertReceivedRecords(ReceiveHost& host, const ReceivedObject& object,
                          const std::string& temp_path);
// Stores, replaces or merges the database in the receive file. 1 when something was stored.
int ReceivePDBFile(ReceiveHost& host, const std::string& temp_path);
// Either of the above by the object's Name; the receive file is deleted in every case.
int HandleReceivedObject(ReceiveHost& host, const ReceivedObject& object,
                         const std::string& temp_path);

}  // namespace qv
