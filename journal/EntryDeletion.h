#pragma once

#include "journal/model/JournalLibrary.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace quillo {

class JournalWindowView;
class Timeline;

// Deleting entries in the window and taking that back: they go to the Trash at once, the notice offers the way back,
// and the list goes on with the entry that takes their place.
class EntryDeletion {
 public:
  // All must outlive it. `showEntry` shows one that is back.
  EntryDeletion(JournalLibrary& library, Timeline& timeline, JournalWindowView& view,
                std::function<void(const QString& identifier)> showEntry);

  // Nothing goes where the one that is shown has words that cannot be saved.
  void moveToTrash(const QStringList& identifiers);
  // Of the last deletion; nothing where there is none.
  void undo();
  // To be called when the list has changed: on to the entry that takes the place of what was deleted, once the list is
  // without it.
  void showNext();
  // It is another journal.
  void forget() { m_last.reset(); }

 private:
  JournalLibrary& m_library;
  Timeline& m_timeline;
  JournalWindowView& m_view;
  std::function<void(const QString&)> m_showEntry;
  std::optional<JournalLibrary::Deletion> m_last;
  std::optional<int> m_row;  // where it was, until the next is shown
};

}  // namespace quillo
