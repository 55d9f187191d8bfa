#pragma once

#include <functional>

#include "database/schedule.h"
#include "jet/pager/env.h"
#include "session/session.h"

// The upkeep of a database's file. Every operation tells by itself how it ended; what the user calls off
// changes nothing and says nothing.
namespace tandeko {

struct UpkeepTools {
  Session& session;
  jet::Environment& files = jet::Environment::system();
};

// Compacts a database that is closed, when its schedule says so or when `forced`. `before` runs once it is
// certain that there will be work, and can give it up with false.
void BaseDefrag(const UpkeepTools& tools, const QString& path, const QString& password, bool forced,
                const std::function<bool()>& before = {});
// Copies a database into its copy folder, likewise.
void BaseCopy(const UpkeepTools& tools, const QString& path, const QString& password, bool forced,
              const std::function<bool()>& before = {});

// Either of them, forced, on the open database: closes its forms and the database, opens it again.
void maintainOpenDatabase(const UpkeepTools& tools, Upkeep kind);

// The rest work on the open database, which they close and open again, or on one that is not open. Each
// gives false when it was not done.
bool BaseSaveAs(const UpkeepTools& tools, const QString& path);
bool BaseReapir(const UpkeepTools& tools, const QString& path);
// `folder`: where the database lies. Its forms are closed already.
bool BaseRename(const UpkeepTools& tools, const QString& path, const QString& newName, const QString& folder);
bool BaseFromArchiw(const UpkeepTools& tools, const QString& path);
// Opens the session's database exclusively and gives it another password.
bool changePassword(const UpkeepTools& tools, const QString& newPassword);

}  // namespace tandeko
