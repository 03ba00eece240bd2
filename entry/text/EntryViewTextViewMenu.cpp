// The view's context menu.

#include "entry/spelling/GrammarReviewer.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/text/EntryViewTextView.h"
#include "foundation/Bundle.h"
#include "platform/QtInternals.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTextCursor>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostGuesses = 5;
constexpr auto boldCommand = "makeSelectionBold"_L1;
constexpr auto italicCommand = "makeSelectionItalic"_L1;

QString localized(const QString& text) {
  return Bundle::mainBundle().localizedStringForKey(text);
}

// A text of the user's or a server's, for which "&" is no mnemonic.
QString asTitle(QString text) {
  return text.replace(u'&', u"&&"_s);
}

QAction* insertItem(QMenu& menu, QAction* before, const QString& title) {
  auto* item = new QAction(title, &menu);
  menu.insertAction(before, item);
  return item;
}

void insertNote(QMenu& menu, QAction* before, const QString& title) {
  insertItem(menu, before, title)->setEnabled(false);
}

// The place follows edits, which may happen while the menu is open.
QTextCursor placeOf(QTextDocument& document, TextRange range) {
  QTextCursor place(&document);
  place.setPosition(static_cast<int>(range.location));
  place.setPosition(static_cast<int>(range.end()), QTextCursor::KeepAnchor);
  return place;
}

QFont boldFont(const QMenu& menu) {
  QFont font = menu.font();
  font.setBold(true);
  return font;
}

}  // namespace

std::unique_ptr<QMenu> EntryViewTextView::menuForEvent(const QContextMenuEvent& event) {
  std::unique_ptr<QMenu> menu(createStandardContextMenu(event.pos()));
  const bool atCaret = event.reason() == QContextMenuEvent::Keyboard;
  addGuessesToMenu(*menu, atCaret ? textCursor().position() : cursorForPosition(event.pos()).position());
  makeUndoSkipSeams(*menu);
  addSpellingSubmenuToMenu(*menu);
  addFormatSubmenuToMenu(*menu);
  removeLayoutFromMenu(*menu);
  return menu;
}

void EntryViewTextView::makeUndoSkipSeams(const QMenu& menu) {
  const auto lead = [&](const QString& name, void (EntryViewTextView::*command)()) {
    if (auto* item = menu.findChild<QAction*>(name)) {
      item->disconnect(SIGNAL(triggered(bool)));
      connect(item, &QAction::triggered, this, command);
    }
  };
  lead(QtInternals::undoItem, &EntryViewTextView::undo);
  lead(QtInternals::redoItem, &EntryViewTextView::redo);
}

void EntryViewTextView::addGuessesToMenu(QMenu& menu, int position) {
  if (!m_highlighter) return;
  QAction* before = menu.actions().value(0);
  if (const auto word = m_highlighter->misspellingAt(position)) {
    addMisspellingToMenu(menu, before, *word);
    menu.insertSeparator(before);
  }
  const auto issue = m_highlighter->issueAt(position);
  if (!issue) return;
  insertNote(menu, before, asTitle(fontMetrics().elidedText(issue->message, Qt::ElideRight, 420)));
  addReplacementsToMenu(menu, before, issue->replacements, placeOf(*document(), issue->range));
  menu.insertSeparator(before);
}

void EntryViewTextView::addReplacementsToMenu(QMenu& menu, QAction* before, const QStringList& replacements,
                                              const QTextCursor& place) {
  for (const QString& replacement : replacements) {
    QAction* item = insertItem(menu, before, asTitle(replacement));
    item->setFont(boldFont(menu));
    connect(item, &QAction::triggered, this, [this, place, text = place.selectedText(), replacement] {
      if (place.selectedText() == text && !isReadOnly())
        replaceCharacters(TextRange::between(place.selectionStart(), place.selectionEnd()), replacement);
    });
  }
}

void EntryViewTextView::addMisspellingToMenu(QMenu& menu, QAction* before, TextRange range) {
  const QTextCursor place = placeOf(*document(), range);
  const QString word = place.selectedText();
  const QStringList guesses = m_services->spellChecker.suggestions(word, mostGuesses);
  if (guesses.isEmpty()) insertNote(menu, before, localized(u"No Guesses Found"_s));
  addReplacementsToMenu(menu, before, guesses, place);
  menu.insertSeparator(before);
  connect(insertItem(menu, before, localized(u"Ignore Spelling"_s)), &QAction::triggered, this,
          [this, word] { m_services->spellChecker.ignoreSpelling(word); });
  connect(insertItem(menu, before, localized(u"Learn Spelling"_s)), &QAction::triggered, this,
          [this, word] { m_services->spellChecker.learnSpelling(word); });
}

void EntryViewTextView::addSpellingSubmenuToMenu(QMenu& menu) {
  menu.addSeparator();
  QMenu* submenu = menu.addMenu(localized(u"Spelling and Grammar"_s));
  const auto addSwitch = [&](const QString& title, bool on, void (EntryViewTextView::*set)(bool)) {
    QAction* item = submenu->addAction(localized(title));
    item->setCheckable(true);
    item->setChecked(on);
    connect(item, &QAction::toggled, this, [this, set](bool checked) {
      (this->*set)(checked);
      beginChecking();
    });
    return item;
  };
  const bool hasDictionary = m_services->spellChecker.state() != SpellChecker::State::NoDictionary;
  addSwitch(u"Check Spelling While Typing"_s, m_checksSpelling, &EntryViewTextView::setContinuousSpellCheckingEnabled)
      ->setEnabled(hasDictionary);
  QAction* grammar =
      addSwitch(u"Check Grammar With Spelling"_s, m_checksGrammar, &EntryViewTextView::setGrammarCheckingEnabled);
  addSwitch(u"Correct Spelling Automatically"_s, m_correctsSpelling,
            &EntryViewTextView::setAutomaticSpellingCorrectionEnabled)
      ->setEnabled(hasDictionary);

  // Whether there is a server is asked now; the answer may well come while the menu is open.
  GrammarClient& client = grammarReviewer().client();
  const auto follow = [grammar, &client] {
    grammar->setEnabled(client.availability() == GrammarClient::Availability::Available);
  };
  connect(&client, &GrammarClient::availabilityDidChange, grammar, follow);
  follow();
  client.probe();
}

void EntryViewTextView::addFormatSubmenuToMenu(QMenu& menu) {
  QMenu* submenu = menu.addMenu(localized(u"Format"_s));
  const auto addCommand = [&](QLatin1StringView name, const QString& title, const QKeySequence& key) {
    QAction* item = submenu->addAction(localized(title));
    item->setObjectName(name);
    // Shown only; the view deals with the key itself, since the menu is not always there.
    item->setShortcut(key);
    item->setShortcutContext(Qt::WidgetShortcut);
    item->setEnabled(validateMenuItem(*item));
    return item;
  };
  connect(addCommand(boldCommand, u"Bold"_s, Qt::CTRL | Qt::Key_B), &QAction::triggered, this,
          &EntryViewTextView::makeSelectionBold);
  connect(addCommand(italicCommand, u"Italic"_s, Qt::CTRL | Qt::Key_I), &QAction::triggered, this,
          &EntryViewTextView::makeSelectionItalic);
}

void EntryViewTextView::removeLayoutFromMenu(QMenu& menu) {
  const QString title = localized(u"Layout Orientation"_s);
  for (QAction* item : menu.actions())
    if (item->text() == title) menu.removeAction(item);
}

bool EntryViewTextView::validateMenuItem(const QAction& item) const {
  if (item.objectName() == boldCommand || item.objectName() == italicCommand) return canFormatSelection();
  return item.isEnabled();
}

}  // namespace quillo
