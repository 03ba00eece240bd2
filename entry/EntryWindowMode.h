#pragma once

#include <QtGlobal>

namespace quillo {

// How the entry window was opened.
enum EntryWindowMode : qint32 {
  // The user asked for it: it takes the keyboard.
  EntryWindowModeStandard = 0,
  // A reminder opened it: the red icon, and the keyboard stays where it is.
  EntryWindowModeReminder = 1,
};

}  // namespace quillo
