#include "session/forms.h"
