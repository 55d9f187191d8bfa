#pragma once

#include "platform/statements.h"
#include "platform/text.h"
#include "register/item_store.h"
#include "support/recorded_frame.h"
#include "support/test_session.h"

namespace tandeko {

// A new database with the tables of the register, one group, department, unit, state and item group, register
// 1 of kind "S" and register 2 of kind "L", and two employees.
struct RegisterFixture : TestSession {
  RegisterFixture();

  jet::Database& db() { return session.database(); }
  ItemStore store(int registerKey = 1) { return {session.workspace(), db(), registerKey}; }
  int64_t sql(const QString& statement) { return execute(db(), statement); }
  // A value of the first row, as text; "-" for Null and "" without a row.
  QString ask(const QString& query);

  int item(const QString& name, int holder, int parent = 0, int registerKey = 1);
  // "holder/parent" of an item, parent 0 for Null; "" when it is gone.
  QString place(int item);

  // Logs in with another level of rights.
  void user(const QString& level) {
    UserState state = session.user();
    state.level = level;
    session.setUser(state);
  }

  QString path;
  RecordedFrame frame;
  static constexpr int kNowak = 1, kAdamska = 2;
};

}  // namespace tandeko
