#include "entry/text/SpellingMenu.h"

#include "entry/spelling/GrammarReviewer.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/text/EntryViewTextView.h"
#include "entry/text/TextChecking.h"
#include "foundation/Bundle.h"

#include <QAction>
#include <QMenu>
#include <QTextCursor>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostGuesses = 5;

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

SpellingMenu::SpellingMenu(EntryViewTextView& view, QMenu& menu)
    : m_view(view), m_checking(view.checking()), m_menu(menu), m_before(menu.actions().value(0)) {}

void SpellingMenu::addGuesses(int position) {
  const SpellingHighlighter* highlighter = m_checking.highlighter();
  if (!highlighter) return;
  if (const auto word = highlighter->misspellingAt(position)) {
    addMisspelling(*word);
    m_menu.insertSeparator(m_before);
  }
  const auto issue = highlighter->issueAt(position);
  if (!issue) return;
  insertNote(m_menu, m_before, asTitle(m_view.fontMetrics().elidedText(issue->message, Qt::ElideRight, 420)));
  addReplacements(issue->replacements, placeOf(*m_view.document(), issue->range));
  m_menu.insertSeparator(m_before);
}

void SpellingMenu::addReplacements(const QStringList& replacements, const QTextCursor& place) {
  EntryViewTextView& view = m_view;
  for (const QString& replacement : replacements) {
    QAction* item = insertItem(m_menu, m_before, asTitle(replacement));
    item->setFont(boldFont(m_menu));
    QObject::connect(item, &QAction::triggered, &view, [&view, place, text = place.selectedText(), replacement] {
      if (place.selectedText() == text && !view.isReadOnly())
        view.replaceCharacters(TextRange::between(place.selectionStart(), place.selectionEnd()), replacement);
    });
  }
}

void SpellingMenu::addMisspelling(TextRange range) {
  SpellChecker& checker = m_checking.checker();
  const QTextCursor place = placeOf(*m_view.document(), range);
  const QString word = place.selectedText();
  const QStringList guesses = checker.suggestions(word, mostGuesses);
  if (guesses.isEmpty()) insertNote(m_menu, m_before, localized(u"No Guesses Found"_s));
  addReplacements(guesses, place);
  m_menu.insertSeparator(m_before);
  QObject::connect(insertItem(m_menu, m_before, localized(u"Ignore Spelling"_s)), &QAction::triggered, &checker,
                   [&checker, word] { checker.ignoreSpelling(word); });
  QObject::connect(insertItem(m_menu, m_before, localized(u"Learn Spelling"_s)), &QAction::triggered, &checker,
                   [&checker, word] { checker.learnSpelling(word); });
}

void SpellingMenu::addSwitches() {
  m_menu.addSeparator();
  QMenu* submenu = m_menu.addMenu(localized(u"Spelling and Grammar"_s));
  const auto addSwitch = [&](const QString& title, bool on, void (EntryViewTextView::*set)(bool)) {
    QAction* item = submenu->addAction(localized(title));
    item->setCheckable(true);
    item->setChecked(on);
    QObject::connect(item, &QAction::toggled, &m_view, [&view = m_view, set](bool checked) {
      (view.*set)(checked);
      view.checking().begin();
    });
    return item;
  };
  const WritingSwitches& switches = m_checking.switches();
  const bool hasDictionary = m_checking.checker().state() != SpellChecker::State::NoDictionary;
  addSwitch(u"Check Spelling While Typing"_s, switches.checksSpelling,
            &EntryViewTextView::setContinuousSpellCheckingEnabled)
      ->setEnabled(hasDictionary);
  QAction* grammar = addSwitch(u"Check Grammar With Spelling"_s, switches.checksGrammar,
                               &EntryViewTextView::setGrammarCheckingEnabled);
  addSwitch(u"Correct Spelling Automatically"_s, switches.correctsSpelling,
            &EntryViewTextView::setAutomaticSpellingCorrectionEnabled)
      ->setEnabled(hasDictionary);
  followServer(*grammar);
}

// Whether there is a server is asked now; the answer may well come while the menu is open.
void SpellingMenu::followServer(QAction& item) {
  GrammarClient& client = m_checking.grammarReviewer().client();
  const auto follow = [&item, &client] {
    item.setEnabled(client.availability() == GrammarClient::Availability::Available);
  };
  QObject::connect(&client, &GrammarClient::availabilityDidChange, &item, follow);
  follow();
  client.probe();
}

}  // namespace quillo
