#pragma once

#include "session/session.h"

namespace tandeko {

// Opens a letter to the maker's support address in the user's mail program: through the mail interface
// with `letter`'s body and attachments, or, when the setting "Bez MAPI" is "1" or that fails, as a
// "mailto:" address with `shortBody`. False when neither way works.
bool sendToSupport(Session& session, Letter letter, const QString& shortBody);

// The report about a failure; `explanation` is the looked-up text.
bool sendFailureReport(Session& session, const Failure& failure, const QString& explanation);

// The menu's question to the maker.
bool sendQuestion(Session& session);

}  // namespace tandeko
