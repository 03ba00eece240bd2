#include "entry/text/EntryViewTextView.h"

#include "config/Keys.h"
#include "config/Settings.h"
#include "controls/QLScroller.h"
#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/WavyUnderline.h"
#include "entry/text/HashtagCompleter.h"
#include "entry/text/SpellingMenu.h"
#include "entry/text/TextChecking.h"
#include "foundation/Bundle.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr auto boldCommand = "makeSelectionBold"_L1;
constexpr auto italicCommand = "makeSelectionItalic"_L1;

QString localized(const QString& text) {
  return Bundle::mainBundle().localizedStringForKey(text);
}

bool isFormatKey(const QKeyEvent& event) {
  return event.matches(QKeySequence::Bold) || event.matches(QKeySequence::Italic);
}

}  // namespace

void EntryViewTextView::initialize(UserDefaults& defaults) {
  defaults.registerDefaults(settingDefaults(
      {Key::editorSpellCheckEnabled, Key::editorGrammarCheckEnabled, Key::editorCorrectSpellingEnabled}));
}

EntryViewTextView::EntryViewTextView(const EntryTextServices& services, QWidget* parent) : EntryViewTextView(parent) {
  setServices(services);
}

EntryViewTextView::EntryViewTextView(QWidget* parent)
    : PlainTextView(parent), m_completer(std::make_unique<HashtagCompleter>(*this)) {
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
  const auto follow = [this] { m_completer->caretDidMove(); };
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, follow);
  connect(this, &QPlainTextEdit::selectionChanged, this, follow);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { m_completer->textDidScroll(); });
}

void EntryViewTextView::setServices(const EntryTextServices& services) {
  m_defaults = &services.defaults;
  m_localCenter = &services.localCenter;
  initialize(*m_defaults);
  m_checking = std::make_unique<TextChecking>(*this, services.spellChecker, services.defaults);
}

EntryViewTextView::~EntryViewTextView() {
  stopObservingPrefChanges();
}

void EntryViewTextView::awakeFromNib() {
  if (m_isAwake) return;
  m_isAwake = true;
  // Through the setters, which write what they read: from then on the choice is the user's, whatever the default
  // becomes.
  const UserDefaults& defaults = *m_defaults;
  if (defaults.objectForKey(Key::editorSpellCheckEnabled))
    setContinuousSpellCheckingEnabled(defaults.boolForKey(Key::editorSpellCheckEnabled));
  if (defaults.objectForKey(Key::editorGrammarCheckEnabled))
    setGrammarCheckingEnabled(defaults.boolForKey(Key::editorGrammarCheckEnabled));
  if (defaults.objectForKey(Key::editorCorrectSpellingEnabled))
    setAutomaticSpellingCorrectionEnabled(defaults.boolForKey(Key::editorCorrectSpellingEnabled));
  startObservingPrefChanges();
}

void EntryViewTextView::startObservingPrefChanges() {
  m_prefsObservation = m_localCenter->observe(Notice::spellingAndGrammarSettingsDidChange,
                                              [this](const Notification&) { prefsChanged(); });
}

void EntryViewTextView::stopObservingPrefChanges() {
  m_prefsObservation.reset();
}

void EntryViewTextView::prefsChanged() {
  const UserDefaults& defaults = *m_defaults;
  m_checking->settingsDidChange({.checksSpelling = defaults.boolForKey(Key::editorSpellCheckEnabled),
                                 .checksGrammar = defaults.boolForKey(Key::editorGrammarCheckEnabled),
                                 .correctsSpelling = defaults.boolForKey(Key::editorCorrectSpellingEnabled)});
}

void EntryViewTextView::setSwitch(bool WritingSwitches::*which, bool enabled, const QString& key) {
  WritingSwitches switches = m_checking->switches();
  switches.*which = enabled;
  m_checking->setSwitches(switches);
  m_defaults->setBoolForKey(enabled, key);
}

void EntryViewTextView::setContinuousSpellCheckingEnabled(bool enabled) {
  setSwitch(&WritingSwitches::checksSpelling, enabled, Key::editorSpellCheckEnabled);
}

void EntryViewTextView::setGrammarCheckingEnabled(bool enabled) {
  setSwitch(&WritingSwitches::checksGrammar, enabled, Key::editorGrammarCheckEnabled);
}

void EntryViewTextView::setAutomaticSpellingCorrectionEnabled(bool enabled) {
  setSwitch(&WritingSwitches::correctsSpelling, enabled, Key::editorCorrectSpellingEnabled);
}

QStringList EntryViewTextView::acceptableDragTypes() {
  setAcceptDrops(false);
  viewport()->setAcceptDrops(false);
  return {u"text/plain"_s, u"text/html"_s};
}

void EntryViewTextView::surroundSelectionWithString(const QString& marker) {
  if (isReadOnly()) return;
  const QTextCursor selection = textCursor();
  replaceCharacters(TextRange::between(selection.selectionStart(), selection.selectionEnd()),
                    marker + ParagraphSeams::selectedString(selection) + marker);
}

std::unique_ptr<QMenu> EntryViewTextView::menuForEvent(const QContextMenuEvent& event) {
  std::unique_ptr<QMenu> menu = standardMenu(event.pos());
  const bool atCaret = event.reason() == QContextMenuEvent::Keyboard;
  SpellingMenu spelling(*this, *menu);
  spelling.addGuesses(atCaret ? textCursor().position() : cursorForPosition(event.pos()).position());
  spelling.addSwitches();
  addFormatSubmenuToMenu(*menu);
  removeLayoutFromMenu(*menu);
  return menu;
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

bool EntryViewTextView::canFormatSelection() const {
  return m_defaults->boolForKey(Key::markdownEnabled) && textCursor().hasSelection();
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

bool EntryViewTextView::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride: {
      const auto& key = static_cast<QKeyEvent&>(*event);
      if (m_completer->wantsKey(key) || (isFormatKey(key) && canFormatSelection())) {
        event->accept();
        return true;
      }
      // With nothing to take back here the key is the window's.
      if (key.matches(QKeySequence::Undo) && !document()->isUndoAvailable()) {
        event->ignore();
        return false;
      }
      break;
    }
    case QEvent::KeyPress:
      // The base class would move the focus at a Tab before anything else.
      if (const auto& key = static_cast<QKeyEvent&>(*event); key.key() == Qt::Key_Tab && m_completer->handleKey(key)) {
        event->accept();
        return true;
      }
      break;
    default:
      break;
  }
  return PlainTextView::event(event);
}

void EntryViewTextView::keyPressEvent(QKeyEvent* event) {
  m_checking->begin();
  if (m_completer->handleKey(*event)) return;
  if (isFormatKey(*event) && canFormatSelection()) {
    if (event->matches(QKeySequence::Bold))
      makeSelectionBold();
    else
      makeSelectionItalic();
    return;
  }
  const KeyEffect effect = effectOf(*event);
  const int revision = document()->revision();
  m_checking->setTyping(effect != KeyEffect::Other);
  PlainTextView::keyPressEvent(event);
  m_checking->setTyping(false);
  if (effect == KeyEffect::Other || document()->revision() == revision) return;
  if (effect == KeyEffect::Types) m_checking->userDidType();
  m_completer->userDidType();
}

void EntryViewTextView::inputMethodEvent(QInputMethodEvent* event) {
  m_checking->begin();
  const bool commits = !event->commitString().isEmpty();
  const bool composes = !event->preeditString().isEmpty();
  m_checking->setTyping(true);
  PlainTextView::inputMethodEvent(event);
  m_checking->setTyping(false);
  // The base class has replaced the underlines by those of the text being composed.
  m_checking->redraw(textCursor().block());
  if (commits) m_checking->userDidType();
  if (composes)
    m_completer->close();
  else if (commits)
    m_completer->userDidType();
}

void EntryViewTextView::paintEvent(QPaintEvent* event) {
  PlainTextView::paintEvent(event);
  if (!m_checking->highlighter()) return;
  QPainter painter(viewport());
  for (const QTextBlock& block : visibleBlocks())
    drawWavyUnderlines(painter, *block.layout(), blockBoundingGeometry(block).translated(contentOffset()).topLeft());
}

void EntryViewTextView::contextMenuEvent(QContextMenuEvent* event) {
  m_completer->close();
  QMenu* menu = menuForEvent(*event).release();
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(event->globalPos());
}

void EntryViewTextView::focusInEvent(QFocusEvent* event) {
  PlainTextView::focusInEvent(event);
  m_checking->tryAgain();
}

void EntryViewTextView::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason) m_checking->endTyping();
  m_completer->close();
  PlainTextView::focusOutEvent(event);
}

void EntryViewTextView::showEvent(QShowEvent* event) {
  awakeFromNib();
  PlainTextView::showEvent(event);
}

void EntryViewTextView::hideEvent(QHideEvent* event) {
  m_completer->close();
  PlainTextView::hideEvent(event);
}

}  // namespace quillo
