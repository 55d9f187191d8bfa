#pragma once

#include "session/forms.h"
#include "session/settings.h"

namespace tandeko {

// Gives an open form the colour of read-only fields and, to a dictionary, the font size that the user has
// chosen in place of those in `before`. The card lists see to their grids themselves.
void changeLook(ChildForm& form, const ProgramSettings& before, const ProgramSettings& now);

}  // namespace tandeko
