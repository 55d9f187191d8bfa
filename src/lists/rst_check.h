#pragma once

#include "jet/dao/dao.h"
#include "platform/message_box.h"

namespace tandeko {

// Whether every required field of the record being written (AddNew or Edit) has a value; else tells the
// user the first that has none. `table` is the table's name in capitals.
bool RstCheck(jet::Database& database, const jet::Recordset& record, const QString& table,
              MessageService& messages);

}  // namespace tandeko
