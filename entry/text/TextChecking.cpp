#include "entry/text/TextChecking.h"

#include "config/Keys.h"
#include "config/Settings.h"
#include "entry/spelling/AutomaticCorrection.h"
#include "entry/spelling/GrammarReviewer.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/text/PlainTextView.h"
#include "foundation/UserDefaults.h"

#include <QScrollBar>

namespace quillo {

static QUrl grammarServer(const UserDefaults& defaults) {
  auto url = defaults.objectForKey(Key::grammarServerURL);
  if (!url) url = settingForKey(Key::grammarServerURL)->defaultValue();
  return url ? QUrl(url->string(), QUrl::StrictMode) : QUrl();
}

TextChecking::TextChecking(PlainTextView& view, SpellChecker& checker, const UserDefaults& defaults)
    : m_view(view), m_checker(checker), m_defaults(defaults) {
  connect(&view, &PlainTextView::textDidChange, this, [this] {
    if (m_correction) m_correction->textDidChange();
    somethingToReview();
  });
  connect(&view, &PlainTextView::stringWasSet, this, [this] {
    if (m_correction) m_correction->textWasSet();
    somethingToReview();
  });
  connect(&view, &QPlainTextEdit::cursorPositionChanged, this, &TextChecking::caretDidMove);
  connect(&view, &QPlainTextEdit::selectionChanged, this, &TextChecking::caretDidMove);
  connect(view.verticalScrollBar(), &QScrollBar::valueChanged, this, &TextChecking::somethingToReview);
}

TextChecking::~TextChecking() = default;

void TextChecking::setSwitches(const WritingSwitches& switches) {
  m_switches = switches;
  applySwitches();
}

void TextChecking::settingsDidChange(const WritingSwitches& switches) {
  if (m_grammar && m_grammarServer != grammarServer(m_defaults)) {
    m_grammar->setEnabled(false);
    m_grammar.reset();
  }
  setSwitches(switches);
  // What goes on here has begun before.
  if (m_highlighter) begin();
}

void TextChecking::applySwitches() {
  if (m_highlighter) m_highlighter->setSpellingEnabled(m_switches.checksSpelling);
  if (m_grammar) m_grammar->setEnabled(m_switches.checksGrammar);
}

SpellingHighlighter& TextChecking::ensureHighlighter() {
  if (!m_highlighter) {
    PlainTextView& view = m_view;
    m_highlighter = new SpellingHighlighter(
        *view.document(), m_checker,
        {[&view] { return view.visibleBlocks(); }, [&view] { return view.textCursor().position(); }});
    m_correction = std::make_unique<AutomaticCorrection>(view, m_checker);
    applySwitches();
  }
  return *m_highlighter;
}

GrammarReviewer& TextChecking::grammarReviewer() {
  if (!m_grammar) {
    m_grammarServer = grammarServer(m_defaults);
    m_grammar = std::make_unique<GrammarReviewer>(
        ensureHighlighter(), [this] { return m_view.visibleBlocks(); }, m_grammarServer);
    applySwitches();
  }
  return *m_grammar;
}

void TextChecking::begin() {
  if (m_switches.checksSpelling || m_switches.correctsSpelling) {
    ensureHighlighter();
    m_checker.load();
  }
  if (m_switches.checksGrammar) static_cast<void>(grammarReviewer());
}

void TextChecking::setTyping(bool typing) {
  if (m_highlighter) m_highlighter->setTyping(typing);
}

void TextChecking::userDidType() {
  if (m_switches.correctsSpelling && m_correction) m_correction->userDidType();
}

void TextChecking::endTyping() {
  if (m_highlighter) m_highlighter->endTyping();
}

void TextChecking::tryAgain() {
  if (m_grammar) m_grammar->tryAgain();
}

void TextChecking::caretDidMove() {
  if (m_highlighter && m_highlighter->typingPosition() != m_view.textCursor().position()) m_highlighter->endTyping();
}

void TextChecking::somethingToReview() {
  if (m_grammar) m_grammar->somethingToReview();
}

void TextChecking::redraw(const QTextBlock& block) {
  if (m_highlighter) m_highlighter->redraw(block);
}

}  // namespace quillo
