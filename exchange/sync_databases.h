#pragma once
// Merging a received copy of a database into the existing one.

#include "engine/database.h"

namespace qv {

// Whether two schemas hold the same field type in every slot.
bool SchemasCompatible(const Database& a, const Database& b);
// Merges `received` into `existing`: records are matched by their identity (record header)
// when both carry one, otherwise by identical bytes; a matched record whose bytes differ is
// updated, an unmatched one is added; nothing is deleted. 1 on success, -1 when the schemas are
// incompatible (nothing changed). Sets existing.changed when anything changed.
int SyncDatabases(Database& existing, const Database& received);

}  // namespace qv
