#include "entry/text/EntryViewTextView.h"

#include "config/Keys.h"
#include "config/Settings.h"
#include "controls/QLScroller.h"
#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/AutomaticCorrection.h"
#include "entry/spelling/GrammarReviewer.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/spelling/WavyUnderline.h"
#include "entry/text/HashtagCompleter.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"

#include <QMimeData>
#include <QPainter>
#include <QScopedValueRollback>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextLayout>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

void EntryViewTextView::initialize(UserDefaults& defaults) {
  defaults.registerDefaults(settingDefaults(
      {Key::editorSpellCheckEnabled, Key::editorGrammarCheckEnabled, Key::editorCorrectSpellingEnabled}));
}

EntryViewTextView::EntryViewTextView(const EntryTextServices& services, QWidget* parent) : EntryViewTextView(parent) {
  setServices(services);
}

EntryViewTextView::EntryViewTextView(QWidget* parent)
    : QPlainTextEdit(parent),
      m_seams(std::make_unique<ParagraphSeams>(*document())),
      m_completer(std::make_unique<HashtagCompleter>(*this)) {
  acceptableDragTypes();
  setFrameShape(NoFrame);
  // Tab leads on to the buttons.
  setTabChangesFocus(true);
  setVerticalScrollBar(new QLScroller(Qt::Vertical));
  setHorizontalScrollBar(new QLScroller(Qt::Horizontal));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // The paper behind shows through.
  QPalette clear = palette();
  clear.setColor(QPalette::Base, Qt::transparent);
  setPalette(clear);
  viewport()->setAutoFillBackground(false);
  connect(this, &QPlainTextEdit::textChanged, this, &EntryViewTextView::contentsChanged);
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, &EntryViewTextView::caretDidMove);
  connect(this, &QPlainTextEdit::selectionChanged, this, &EntryViewTextView::caretDidMove);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
    m_completer->textDidScroll();
    if (m_grammar) m_grammar->somethingToReview();
  });
}

void EntryViewTextView::setServices(const EntryTextServices& services) {
  m_services.emplace(services);
  initialize(m_services->defaults);
}

EntryViewTextView::~EntryViewTextView() {
  stopObservingPrefChanges();
}

void EntryViewTextView::awakeFromNib() {
  if (m_isAwake) return;
  m_isAwake = true;
  // Through the setters, which write what they read: from then on the choice is the user's, whatever the default
  // becomes.
  const UserDefaults& defaults = m_services->defaults;
  if (defaults.objectForKey(Key::editorSpellCheckEnabled))
    setContinuousSpellCheckingEnabled(defaults.boolForKey(Key::editorSpellCheckEnabled));
  if (defaults.objectForKey(Key::editorGrammarCheckEnabled))
    setGrammarCheckingEnabled(defaults.boolForKey(Key::editorGrammarCheckEnabled));
  if (defaults.objectForKey(Key::editorCorrectSpellingEnabled))
    setAutomaticSpellingCorrectionEnabled(defaults.boolForKey(Key::editorCorrectSpellingEnabled));
  startObservingPrefChanges();
}

void EntryViewTextView::startObservingPrefChanges() {
  m_prefsObservation = m_services->localCenter.observe(Notice::spellingAndGrammarSettingsDidChange,
                                                       [this](const Notification&) { prefsChanged(); });
}

void EntryViewTextView::stopObservingPrefChanges() {
  m_prefsObservation.reset();
}

void EntryViewTextView::prefsChanged() {
  const UserDefaults& defaults = m_services->defaults;
  m_checksSpelling = defaults.boolForKey(Key::editorSpellCheckEnabled);
  m_checksGrammar = defaults.boolForKey(Key::editorGrammarCheckEnabled);
  m_correctsSpelling = defaults.boolForKey(Key::editorCorrectSpellingEnabled);
  applySwitches();
}

void EntryViewTextView::setContinuousSpellCheckingEnabled(bool enabled) {
  m_checksSpelling = enabled;
  applySwitches();
  m_services->defaults.setBoolForKey(enabled, Key::editorSpellCheckEnabled);
}

void EntryViewTextView::setGrammarCheckingEnabled(bool enabled) {
  m_checksGrammar = enabled;
  applySwitches();
  m_services->defaults.setBoolForKey(enabled, Key::editorGrammarCheckEnabled);
}

void EntryViewTextView::setAutomaticSpellingCorrectionEnabled(bool enabled) {
  m_correctsSpelling = enabled;
  m_services->defaults.setBoolForKey(enabled, Key::editorCorrectSpellingEnabled);
}

void EntryViewTextView::applySwitches() {
  if (m_highlighter) m_highlighter->setSpellingEnabled(m_checksSpelling);
  if (m_grammar) m_grammar->setEnabled(m_checksGrammar);
}

SpellingHighlighter& EntryViewTextView::ensureHighlighter() {
  if (!m_highlighter) {
    m_highlighter =
        new SpellingHighlighter(*document(), m_services->spellChecker,
                                {[this] { return visibleBlocks(); }, [this] { return textCursor().position(); }});
    m_correction = std::make_unique<AutomaticCorrection>(*this, m_services->spellChecker);
    applySwitches();
  }
  return *m_highlighter;
}

static QUrl grammarServer(const UserDefaults& defaults) {
  const auto stored = defaults.objectForKey(Key::grammarServerURL);
  return QUrl((stored ? *stored : *settingForKey(Key::grammarServerURL)->defaultValue()).string(), QUrl::StrictMode);
}

GrammarReviewer& EntryViewTextView::grammarReviewer() {
  if (!m_grammar) {
    m_grammar = std::make_unique<GrammarReviewer>(
        ensureHighlighter(), [this] { return visibleBlocks(); }, grammarServer(m_services->defaults));
    applySwitches();
  }
  return *m_grammar;
}

// At a key press, and not before: showing the window is not to wait for a dictionary.
void EntryViewTextView::beginChecking() {
  if (m_checksSpelling || m_correctsSpelling) {
    ensureHighlighter();
    m_services->spellChecker.load();
  }
  if (m_checksGrammar) grammarReviewer();
}

QList<QTextBlock> EntryViewTextView::visibleBlocks() const {
  QList<QTextBlock> blocks;
  // A paragraph is at least one line high, so that the height of the view bounds their number.
  for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
    if (blockBoundingGeometry(block).translated(contentOffset()).top() > viewport()->height()) break;
    blocks << block;
  }
  return blocks;
}

void EntryViewTextView::paintEvent(QPaintEvent* event) {
  QPlainTextEdit::paintEvent(event);
  if (!m_highlighter) return;
  QPainter painter(viewport());
  for (const QTextBlock& block : visibleBlocks())
    drawWavyUnderlines(painter, *block.layout(), blockBoundingGeometry(block).translated(contentOffset()).topLeft());
}

QStringList EntryViewTextView::acceptableDragTypes() {
  setAcceptDrops(false);
  viewport()->setAcceptDrops(false);
  return {u"text/plain"_s, u"text/html"_s};
}

QString EntryViewTextView::string() const {
  return m_seams->string();
}

void EntryViewTextView::setString(const QString& text) {
  const QScopedValueRollback setting(m_isSettingString, true);
  m_seams->reset();
  if (text.size() <= ParagraphSeams::longestUnbroken) {
    setPlainText(text);
  } else {
    setPlainText({});
    document()->setUndoRedoEnabled(false);
    QTextCursor start(document());
    m_seams->insert(start, text);
    moveCursor(QTextCursor::Start);
    document()->setUndoRedoEnabled(true);
    document()->setModified(false);
  }
  m_seams->leaveAsItIs();
  m_lastText = string();
  if (m_correction) m_correction->textWasSet();
  if (m_grammar) m_grammar->somethingToReview();
}

void EntryViewTextView::setTextContainerInset(QSizeF inset) {
  document()->setDocumentMargin(0);
  const int horizontal = static_cast<int>(inset.width());
  const int vertical = static_cast<int>(inset.height());
  setViewportMargins(horizontal, vertical, horizontal, vertical);
}

void EntryViewTextView::contentsChanged() {
  if (m_isSettingString || m_seams->isArranging()) return;
  // A text that is being composed lies in its block.
  if (m_isUndoing || !textCursor().block().layout()->preeditAreaText().isEmpty())
    m_seams->leaveAsItIs();
  else
    m_seams->arrange();
  // Qt also tells of text that an input method has not committed yet.
  QString now = string();
  if (now == m_lastText) return;
  m_lastText = std::move(now);
  if (m_correction) m_correction->textDidChange();
  if (m_grammar) m_grammar->somethingToReview();
  Q_EMIT textDidChange();
}

void EntryViewTextView::undo() {
  undoUntilTextChanges(&QPlainTextEdit::undo, &QTextDocument::isUndoAvailable);
}

void EntryViewTextView::redo() {
  undoUntilTextChanges(&QPlainTextEdit::redo, &QTextDocument::isRedoAvailable);
}

// Each turn takes one step off the stack.
void EntryViewTextView::undoUntilTextChanges(void (QPlainTextEdit::*step)(),
                                             bool (QTextDocument::*isAvailable)() const) {
  const QScopedValueRollback undoing(m_isUndoing, true);
  const QString before = m_lastText;
  do {
    (this->*step)();
  } while (m_lastText == before && (document()->*isAvailable)());
}

void EntryViewTextView::caretDidMove() {
  if (m_highlighter && m_highlighter->typingPosition() != textCursor().position()) m_highlighter->endTyping();
  m_completer->caretDidMove();
}

QMimeData* EntryViewTextView::createMimeDataFromSelection() const {
  QString selected = ParagraphSeams::selectedString(textCursor());
  // The base class knows no seams.
  if (selected.size() == textCursor().selectedText().size()) return QPlainTextEdit::createMimeDataFromSelection();
  selected.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
  auto plain = std::make_unique<QMimeData>();
  plain->setText(selected);
  return plain.release();
}

bool EntryViewTextView::canInsertFromMimeData(const QMimeData* source) const {
  return source->hasText() || source->hasHtml();
}

void EntryViewTextView::insertFromMimeData(const QMimeData* source) {
  // Some programs offer formatted text only.
  const QString text =
      source->hasText() ? source->text() : QTextDocumentFragment::fromHtml(source->html()).toPlainText();
  stepOverSeam(QTextCursor::PreviousCharacter);
  if (text.size() > ParagraphSeams::longestUnbroken) {
    QTextCursor caret = textCursor();
    m_seams->insert(caret, text);
  } else {
    insertPlainText(text);
  }
  ensureCursorVisible();
}

// Replaced as one undo step that nothing typed before or after joins.
void EntryViewTextView::replaceCharacters(TextRange range, const QString& text) {
  if (range.location < 0 || range.length < 0 || range.end() >= document()->characterCount()) return;
  QTextCursor caret = textCursor();
  QTextCursor cursor(document());
  cursor.setPosition(static_cast<int>(range.location));
  cursor.setPosition(static_cast<int>(range.end()), QTextCursor::KeepAnchor);
  caret.beginEditBlock();
  m_seams->insert(cursor, text);
  caret.endEditBlock();
  document()->setModified(false);
}

void EntryViewTextView::surroundSelectionWithString(const QString& marker) {
  if (isReadOnly()) return;
  const QTextCursor selection = textCursor();
  replaceCharacters(TextRange::between(selection.selectionStart(), selection.selectionEnd()),
                    marker + ParagraphSeams::selectedString(selection) + marker);
}

bool EntryViewTextView::canFormatSelection() const {
  return m_services->defaults.boolForKey(Key::markdownEnabled) && textCursor().hasSelection();
}

void EntryViewTextView::setCompletionSource(std::function<QStringList()> source) {
  m_completer->setSource(std::move(source));
}

void EntryViewTextView::completionSourceDidChange() {
  m_completer->sourceDidChange();
}

TextRange EntryViewTextView::currentWordRangeForCursorLocation(qsizetype location) const {
  // Words do not reach over the ends of a paragraph, so that the rest of a long text need not be looked at.
  const auto within = static_cast<int>(std::clamp(location, qsizetype{0}, qsizetype{document()->characterCount()} - 1));
  const auto runIn = [](const QTextBlock& block, qsizetype place) {
    TextRange run = rangeBetweenSpaces(block.text(), place);
    run.location += block.position();
    return run;
  };
  QTextBlock block = document()->findBlock(within);
  TextRange range = runIn(block, within - block.position());
  // On over seams, block by block.
  qsizetype end = range.end();
  for (QTextBlock next = block.next(); end == next.position() - 1 && ParagraphSeams::isBefore(next); next = next.next())
    if (const TextRange run = runIn(next, 0); run.length > 0) end = run.end();
  for (; range.location == block.position() && ParagraphSeams::isBefore(block); block = block.previous()) {
    const TextRange run = runIn(block.previous(), block.previous().length() - 1);
    if (run.length > 0) range.location = run.location;
  }
  return TextRange::between(range.location, end);
}

TextRange EntryViewTextView::rangeForUserCompletion() const {
  const QTextCursor caret = textCursor();
  // The base class completes nothing.
  if (caret.hasSelection() || document()->isEmpty()) return TextRange::nowhere();
  const TextRange word = currentWordRangeForCursorLocation(caret.position());
  if (word.length == 0 || document()->characterAt(static_cast<int>(word.location)) != u'#') return TextRange::nowhere();
  return word.end() == caret.position() ? word : TextRange::nowhere();
}

void EntryViewTextView::insertCompletion(const QString& completion, TextRange range, TextMovement /*movement*/,
                                         bool isFinal) {
  if (!isFinal || range.isNowhere() || isReadOnly()) return;
  replaceCharacters(range, completion);
}

}  // namespace quillo
