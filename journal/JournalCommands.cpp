#include "journal/JournalCommands.h"

#include <QMenu>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

class Builder {
 public:
  Builder(QWidget& window, QList<QMenu*>& menus) : m_window(window), m_menus(menus) {}

  void menu(const QString& title) { m_menus << new QMenu(title, &m_window); }
  void separator() { m_menus.last()->addSeparator(); }
  QAction* item(const QString& title, const QList<QKeySequence>& keys = {}, bool isSwitch = false) {
    auto* action = new QAction(title, &m_window);
    action->setShortcuts(keys);
    action->setCheckable(isSwitch);
    m_menus.last()->addAction(action);
    // The window's: keys work while no menu is open.
    m_window.addAction(action);
    return action;
  }

 private:
  QWidget& m_window;
  QList<QMenu*>& m_menus;
};

QList<QKeySequence> standard(QKeySequence::StandardKey key) {
  return QKeySequence::keyBindings(key);
}

QList<QKeySequence> keys(const QString& text) {
  return {QKeySequence(text)};
}

// Of no command: the calendar has them while it has the keyboard.
constexpr std::pair<QStringView, QStringView> calendarKeys[] = {
    {u"Return", u"Entries of the day"}, {u"M", u"Entries of the month"}, {u"Y", u"Entries of the year"}};

QString line(QStringView key, QStringView what) {
  return u"<tr><td width=\"180\"><b>%1</b></td><td>%2</td></tr>"_s.arg(key.toString().toHtmlEscaped(),
                                                                       what.toString().toHtmlEscaped());
}

}  // namespace

JournalCommands::JournalCommands(QWidget& window) {
  Builder build(window, menus);
  build.menu(u"&File"_s);
  newEntry = build.item(u"&New Entry"_s, keys(u"Ctrl+N"_s));
  newEntryOnDay = build.item(u"New Entry on the Calendar’s Da&y"_s, keys(u"Ctrl+Shift+N"_s));
  build.separator();
  print = build.item(u"&Print…"_s, keys(u"Ctrl+P"_s));
  exportPDF = build.item(u"Save as P&DF…"_s, keys(u"Ctrl+Shift+P"_s));
  build.separator();
  exportEntries = build.item(u"&Export…"_s, keys(u"Ctrl+Shift+E"_s));
  importEntries = build.item(u"&Import…"_s, keys(u"Ctrl+Shift+I"_s));
  undoImport = build.item(u"Take Back the &Last Import…"_s);
  build.separator();
  preferences = build.item(u"Pre&ferences…"_s, keys(u"Ctrl+,"_s));
  build.separator();
  close = build.item(u"&Close Window"_s, keys(u"Ctrl+W"_s));
  quit = build.item(u"&Quit"_s, keys(u"Ctrl+Q"_s));

  build.menu(u"&Edit"_s);
  undo = build.item(u"&Undo"_s, standard(QKeySequence::Undo));
  redo = build.item(u"&Redo"_s, standard(QKeySequence::Redo));
  build.separator();
  find = build.item(u"&Find"_s, keys(u"Ctrl+F"_s));
  details = build.item(u"Entry &Details: Date, Place, Tags"_s, keys(u"Ctrl+I"_s));
  compareVersions = build.item(u"Compare &Versions…"_s, keys(u"Ctrl+Shift+D"_s));
  // Not with Ctrl alone: that takes a word out of a text.
  moveToTrash = build.item(u"Move to &Trash"_s, keys(u"Ctrl+Shift+Backspace"_s));

  build.menu(u"&View"_s);
  read = build.item(u"&Read"_s, keys(u"Ctrl+E"_s), true);
  year = build.item(u"&Year"_s, keys(u"Ctrl+Shift+Y"_s), true);
  build.separator();
  sidebar = build.item(u"&Sidebar"_s, keys(u"F9"_s), true);
  list = build.item(u"&List of Entries"_s, keys(u"F8"_s), true);
  build.separator();
  larger = build.item(u"&Larger Text"_s, {QKeySequence(u"Ctrl++"_s), QKeySequence(u"Ctrl+="_s)});
  smaller = build.item(u"S&maller Text"_s, keys(u"Ctrl+-"_s));
  normalSize = build.item(u"&Normal Text Size"_s, keys(u"Ctrl+0"_s));

  build.menu(u"&Go"_s);
  allEntries = build.item(u"&All Entries"_s, keys(u"Ctrl+L"_s));
  today = build.item(u"&Today"_s, keys(u"Ctrl+T"_s));
  onThisDay = build.item(u"&On This Day"_s, keys(u"Ctrl+D"_s));
  randomEntry = build.item(u"&Random Entry"_s, keys(u"Ctrl+R"_s));
  build.separator();
  previousEntry = build.item(u"&Previous in the List"_s, keys(u"Alt+Up"_s));
  nextEntry = build.item(u"&Next in the List"_s, keys(u"Alt+Down"_s));

  build.menu(u"&Help"_s);
  shortcuts = build.item(u"&Keyboard Shortcuts"_s, keys(u"F1"_s));
  about = build.item(u"&About Quillo"_s);
}

QString JournalCommands::shortcutList() const {
  QString text;
  for (const QMenu* menu : menus) {
    text += u"<h4>%1</h4><table>"_s.arg(menu->title().remove(u'&'));
    const QList<QAction*> items = menu->actions();
    for (const QAction* item : items) {
      if (item->shortcut().isEmpty()) continue;
      text += line(item->shortcut().toString(QKeySequence::NativeText), item->text().remove(u'&').remove(u'…'));
    }
    text += u"</table>"_s;
  }
  text += u"<h4>Calendar</h4><table>"_s;
  for (const auto& [key, what] : calendarKeys) text += line(key, what);
  return text + u"</table>"_s;
}

}  // namespace quillo
