#pragma once

#include <QComboBox>
#include <functional>

#include "database/catalogue.h"
#include "session/session.h"

namespace tandeko {

// Reads the handy list at start: checks every active database, fills the catalogue and `cmbBaza` with
// those that pass, runs `maintain` (the scheduled compacting and copying) for each, offers to drop the
// unreachable ones, and selects the database of the last session. True when a database is selected.
bool BaseListRead(Session& session, Catalogue& catalogue, QComboBox& cmbBaza,
                  const std::function<void(const CatalogueEntry&)>& maintain = {});

// "Otwórz...": lets the user point at a file, checks it, and offers to add it to the handy list. An entry
// without a path when he cancels or the file fails.
CatalogueEntry chooseDatabase(Session& session);

// Checks a file that is not taken from the list; as above for one that fails.
CatalogueEntry checkedEntry(Session& session, const QString& path);

}  // namespace tandeko
