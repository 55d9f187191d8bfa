#pragma once

#include "jet/format/error.h"

// The number of the jet::Error that `action` throws; 0 when it throws none.
template <typename Action>
int errorOf(Action&& action) {
  try {
    action();
  } catch (const jet::Error& error) {
    return error.number();
  }
  return 0;
}
