#include "app/linked_navigation.h"

#include "app/core_calls.h"
#include "app/file_flows.h"
#include "engine/field_settings.h"
#include "engine/format.h"
#include "engine/text.h"
#include "processing/filter.h"
#include "security/access.h"
#include "security/settings.h"

namespace qv::app {

std::vector<Database*> OpenTable(Workspace& workspace) {
  std::vector<Database*> open;
  for (int i = 0; i <= workspace.index(); ++i) open.push_back(workspace.slot(i));
  return open;
}

LinkAccessCheck GateAccess(Workspace& workspace, AccessGate& access) {
  return [&workspace, &access](Database& db) {
    if (!db.loaded) return false;
    if (!access.AllowOpen(workspace, db)) return false;
    DatabaseDefinition& definition = db.definition();
    if (definition.settings_flags() & kDatabaseEnciphered) {
      if (!access.UnlockLoaded(workspace, db)) return false;
      definition.set_settings_flags(definition.settings_flags() & ~kDatabaseEnciphered);
    }
    return true;
  };
}

bool FollowLink(Workspace& workspace, AccessGate& access, int slot, std::uint32_t number) {
  if (workspace.index() + 1 >= kStackSlots) {
    workspace.prompter.message(kStackFull, "ERROR", Icon::Exclamation);
    return false;
  }
  Database& parent = workspace.current();
  if (parent.definition().field_type(slot) == kRelationship && LinkKey(parent, slot, number) == 0) {
    // A Relationship whose key field is empty relates to nothing.
    workspace.prompter.message(kNoRelationshipKey, "Error", Icon::Information);
    return false;
  }
  auto open = OpenTable(workspace);
  LinkedOpen linked = OpenLinkedDatabase(parent, slot, number, open, workspace.prompter,
                                         GateAccess(workspace, access));
  if (!linked.db) return false;
  if (!linked.opened) {
    workspace.prompter.message(
        StringPrintf(kAlreadyOpenBelow, Cp1252ToUtf8(linked.db->name).c_str()), "ERROR",
        Icon::Exclamation);
    return false;
  }
  // A Link followed for the first time gets its key now, when it leads somewhere.
  const std::uint32_t key = EnsureLinkKey(parent, slot, number);
  parent.current = number;
  Database& child = *linked.opened;
  PositionOpenedDatabase(workspace, child);
  RestrictToParent(child, ChildKeyField(parent, slot, child), key);
  workspace.Push(std::move(linked.opened));
  return true;
}

bool ReturnFromLink(Workspace& workspace, FileFlows& flows) {
  if (workspace.index() == 0) return false;
  if (flows.CloseCurrent(true, false) == kCloseCancelled) return false;
  CloseDatabase(workspace.current());
  workspace.Pop();
  // Records added below may change what the parent's Link fields stand for, not its own list.
  RebuildFilteredList(workspace.current());
  return true;
}

bool ReturnToFirstDatabase(Workspace& workspace, FileFlows& flows) {
  while (workspace.index() > 0)
    if (!ReturnFromLink(workspace, flows)) return false;
  return true;
}

std::vector<std::string> Breadcrumb(Workspace& ws) {
  std::vector<std::string> crumbs;
  for (int i = 0; i <= ws.index(); ++i) {
    const Database& db = *ws.slot(i);
    std::string crumb = Cp1252ToUtf8(db.name);
    if (i < ws.index() && db.current < db.count())
      crumb += ": " + Cp1252ToUtf8(ParentShownText(db, db.current, ws.options));
    crumbs.push_back(crumb);
  }
  return crumbs;
}

void LinkNewRecord(Workspace& workspace, const Database& db, RecordValues& values) {
  if (db.restriction_field < 0 || workspace.index() == 0 || &workspace.current() != &db) return;
  const Database& parent = *workspace.slot(workspace.index() - 1);
  BelongToParent(db, db.restriction_field, db.restriction_key,
                 ParentShownText(parent, parent.current, workspace.options), values);
}

std::unique_ptr<Database> ReadLinkedQuietly(const Database& db, int slot) {
  SilentPrompter quiet;
  LinkedOpen linked = OpenLinkedDatabase(db, slot, kNewRecord, {}, quiet, [](Database& other) {
    // Only what anyone may read: no password asked from inside a record.
    return GetAccess(other.definition(), kOpenDatabase) == kFullAccess &&
           !IsDatabaseEnciphered(other.definition());
  });
  if (linked.opened) ShowAllRecords(*linked.opened);
  return std::move(linked.opened);
}

std::optional<std::vector<std::string>> LinkedRecordTexts(const Database& db, int slot,
                                                          std::uint32_t key,
                                                          const FormatOptions& options) {
  if (key == 0) return std::vector<std::string>{};
  auto other = ReadLinkedQuietly(db, slot);
  if (!other) return std::nullopt;
  std::vector<std::string> texts;
  int lookup = other->definition().lookup_field();
  for (std::uint32_t r : LinkedRecords(*other, ChildKeyField(db, slot, *other), key))
    texts.push_back(Cp1252ToUtf8(RecordValueText(*other, r, lookup, options)));
  return texts;
}

std::optional<Bytes> ReassignValue(Workspace& workspace, AccessGate& access, Database& child,
                                   int slot, const ParentChooser& choose) {
  if (access.CheckAccess(workspace, child, Guarded::EditRecords, true) != kAccessFull)
    return std::nullopt;
  auto open = OpenTable(workspace);
  LinkedOpen linked = OpenLinkedDatabase(child, slot, child.current, open, workspace.prompter,
                                         GateAccess(workspace, access));
  if (!linked.db) return std::nullopt;
  Database& parent = *linked.db;
  // The parent's Link field that reaches this database.
  int link = -1;
  for (int s = 0; s < kFieldSlots && link < 0; ++s)
    if (parent.definition().field_type(s) == kLink &&
        LinkTarget(parent.definition().field(s)) == child.header.Name())
      link = s;
  if (link < 0) {
    workspace.prompter.message(kLinkedNotPresent, kLinkedErrorCaption, Icon::Exclamation);
    return std::nullopt;
  }
  auto picked = choose(parent);
  if (!picked || *picked >= parent.count()) return std::nullopt;
  if (workspace.prompter.ask(kReassignQuestion, kQuestionCaption, Buttons::YesNo, Icon::Question) !=
      Answer::Yes)
    return std::nullopt;
  std::uint32_t key = EnsureLinkKey(parent, link, *picked);
  // A parent opened only for this keeps its new key on disk before any record carries it.
  SaveOutcome outcome;
  if (linked.opened && parent.changed && !SaveDatabase(parent, workspace.clock, &outcome)) {
    workspace.prompter.message(SaveFailureText(outcome, parent.path), "ERROR", Icon::Exclamation);
    return std::nullopt;
  }
  return LinkedValue(key, ParentShownText(parent, *picked, workspace.options));
}

std::vector<std::uint32_t> RecordsInScope(const Database& db, DeleteScope scope) {
  std::vector<char> in_view(db.count(), 0);
  for (std::uint32_t n : db.visible)
    if (n < db.count()) in_view[n] = 1;
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t n = 0; n < db.count(); ++n)
    if (scope == DeleteScope::All || (scope == DeleteScope::WithinFilter) == (in_view[n] != 0))
      numbers.push_back(n);
  return numbers;
}

std::uint32_t DeleteLinkedRecordsOf(Workspace& workspace, AccessGate& access, const Database& db,
                                    const std::vector<LinkKeys>& keys) {
  std::uint32_t gone = 0;
  for (const LinkKeys& k : keys) {
    auto open = OpenTable(workspace);
    // The first record with this key stands for all in the request; only the key set matters.
    LinkedOpen linked =
        OpenLinkedDatabase(db, k.slot, 0, open, workspace.prompter, GateAccess(workspace, access));
    if (!linked.db) continue;
    if (access.CheckAccess(workspace, *linked.db, Guarded::DeleteRecords, true) != kAccessFull)
      continue;
    gone += DeleteLinkedRecords(*linked.db, ChildKeyField(db, k.slot, *linked.db), k.keys,
                                workspace.prompter);
    if (linked.opened && linked.db->changed) {
      SaveOutcome outcome;
      if (!SaveDatabase(*linked.db, workspace.clock, &outcome))
        workspace.prompter.message(SaveFailureText(outcome, linked.db->path), "ERROR",
                                   Icon::Exclamation);
    }
  }
  return gone;
}

}  // namespace qv::app
