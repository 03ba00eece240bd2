#pragma once

#include <QAction>
#include <QList>
#include <QString>

class QMenu;
class QWidget;

namespace quillo {

// The commands of the journal's window: menus, keys, and the list of keys. What they do is connected by the window.
struct JournalCommands {
  explicit JournalCommands(QWidget& window);

  // In the order in which they stand, each a menu of the window's.
  QList<QMenu*> menus;

  QAction* newEntry;
  QAction* newEntryOnDay;
  QAction* print;
  QAction* exportPDF;
  QAction* exportEntries;
  QAction* importEntries;
  QAction* undoImport;
  QAction* preferences;
  QAction* close;
  QAction* quit;

  QAction* undo;
  QAction* redo;
  QAction* find;
  QAction* details;
  QAction* compareVersions;
  QAction* moveToTrash;

  QAction* read;
  QAction* sidebar;
  QAction* list;
  QAction* year;
  QAction* larger;
  QAction* smaller;
  QAction* normalSize;

  QAction* allEntries;
  QAction* today;
  QAction* onThisDay;
  QAction* randomEntry;
  QAction* nextEntry;
  QAction* previousEntry;

  QAction* shortcuts;
  QAction* about;

  // All keys with what they do, a line each.
  [[nodiscard]] QString shortcutList() const;
};

}  // namespace quillo
