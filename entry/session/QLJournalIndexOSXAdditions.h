#pragma once

#include "qlcore/QLJournalIndexDeletion.h"

class QWidget;

namespace quillo {

class Alerts;
struct Alert;

// Deleting an entry after asking the user. The index and the alerts must outlive the question.
namespace QLJournalIndexOSXAdditions {

// The code that an alert ends with where its first button was chosen.
inline constexpr int alertDefaultReturn = 1;

// The window that an alert hangs on: the one that has the keyboard, or else the first of the program's visible ones;
// null where there is none.
[[nodiscard]] QWidget* alertParent();

// Brings the program to the front, asks, and answers the code of the button.
int runAlert(const Alert& alert, Alerts& alerts);

// Ask first, and move the item to the Trash; where that fails, offer to delete it for good. True when it is gone, also
// where its file was gone before. What makes the last attempt fail is shown.
bool deleteEntryOrEntryFileInteractively(QLJournalIndex& index, const Deletable& item, Alerts& alerts);
bool deleteEntryFileInteractively(QLJournalIndex& index, const std::shared_ptr<QLJournalEntryFile>& entryFile,
                                  Alerts& alerts);
bool deleteEntryInteractively(QLJournalIndex& index, const QLEntry& entry, Alerts& alerts);

}  // namespace QLJournalIndexOSXAdditions
}  // namespace quillo
