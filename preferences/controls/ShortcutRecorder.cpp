#include "preferences/controls/ShortcutRecorder.h"

#include "PTHotKey/ShortcutText.h"
#include "controls/Fonts.h"

#include <QKeyEvent>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

quint32 modifiersOf(Qt::KeyboardModifiers pressed) {
  quint32 modifiers = 0;
  if (pressed & Qt::MetaModifier) modifiers |= HotKeyModifier::command;
  if (pressed & Qt::AltModifier) modifiers |= HotKeyModifier::option;
  if (pressed & Qt::ControlModifier) modifiers |= HotKeyModifier::control;
  if (pressed & Qt::ShiftModifier) modifiers |= HotKeyModifier::shift;
  return modifiers;
}

// That a modifier's own key stands for. The event of its press does not count it yet, that of its release still does.
Qt::KeyboardModifiers modifierOfKey(int key) {
  switch (key) {
    case Qt::Key_Shift:
      return Qt::ShiftModifier;
    case Qt::Key_Control:
      return Qt::ControlModifier;
    case Qt::Key_Alt:
      return Qt::AltModifier;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
      return Qt::MetaModifier;
    default:
      return Qt::NoModifier;
  }
}

bool isModifierKey(int key) {
  return modifierOfKey(key) != Qt::NoModifier || key == Qt::Key_AltGr || key == Qt::Key_CapsLock ||
         key == Qt::Key_NumLock || key == Qt::Key_ScrollLock || key == Qt::Key_Mode_switch;
}

QString refusal(LossForTyping loss, const PTKeyCombo& combo) {
  const QString key = combo.keyCodeString();
  if (loss == LossForTyping::ShiftedKey)
    return u"Shift and %1 would be lost for typing: add Super, Alt or Ctrl."_s.arg(key);
  return u"%1 alone would be lost for typing: add Super, Alt, Ctrl or Shift."_s.arg(key);
}

}  // namespace

ShortcutRecorder::ShortcutRecorder(ShortcutRecorderServices services, QWidget* parent)
    : QPushButton(parent),
      m_services(std::move(services)),
      m_trial(m_services.hotKeys),
      m_combo(PTKeyCombo::clearKeyCombo()) {
  setObjectName(u"shortcut"_s);
  setFont(textFont(13));
  setAutoDefault(false);
  setToolTip(u"Backspace takes the key away, Escape leaves it as it was."_s);
  connect(this, &QPushButton::clicked, this, [this] {
    if (m_isRecording)
      endRecording();
    else
      beginRecording();
  });
  updateText();
}

QSize ShortcutRecorder::sizeHint() const {
  return QPushButton::sizeHint().expandedTo({190, 0});
}

void ShortcutRecorder::setCombo(const PTKeyCombo::Pointer& combo) {
  m_combo = combo;
  updateText();
}

void ShortcutRecorder::beginRecording() {
  m_trial.cancel();
  m_isRecording = true;
  setFocus();
  // Also what other programs have claimed is to come here, so that it can be told.
  grabKeyboard();
  Q_EMIT said({}, false);
  updateText();
}

void ShortcutRecorder::endRecording() {
  if (!m_isRecording) return;
  m_isRecording = false;
  releaseKeyboard();
  updateText();
}

void ShortcutRecorder::updateText() {
  if (m_isRecording)
    setText(u"Press the keys…"_s);
  else
    setText(m_combo->isValidHotKeyCombo() ? wordsForKeyCombo(*m_combo) : u"Click to choose"_s);
}

void ShortcutRecorder::showModifiers(quint32 modifiers) {
  if (modifiers == 0) return updateText();
  setText(wordsForModifiers(modifiers) + u'…');
}

bool ShortcutRecorder::event(QEvent* event) {
  // While it records, no key is a menu's, and Tab does not go to the next field by itself.
  if (m_isRecording && event->type() == QEvent::ShortcutOverride) {
    event->accept();
    return true;
  }
  if (m_isRecording && event->type() == QEvent::KeyPress) {
    keyDidPress(*static_cast<QKeyEvent*>(event));
    event->accept();
    return true;
  }
  return QPushButton::event(event);
}

void ShortcutRecorder::keyPressEvent(QKeyEvent* event) {
  const bool clears = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
  if (clears && event->modifiers() == Qt::NoModifier) return choose(PTKeyCombo::clearKeyCombo());
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
  QPushButton::keyPressEvent(event);
}

void ShortcutRecorder::keyReleaseEvent(QKeyEvent* event) {
  if (!m_isRecording) return QPushButton::keyReleaseEvent(event);
  showModifiers(modifiersOf(event->modifiers() & ~modifierOfKey(event->key())));
}

void ShortcutRecorder::focusOutEvent(QFocusEvent* event) {
  endRecording();
  QPushButton::focusOutEvent(event);
}

void ShortcutRecorder::hideEvent(QHideEvent* event) {
  // A refusal of some keys is no news beside the others that are in force when the field is seen again.
  Q_EMIT said({}, false);
  QPushButton::hideEvent(event);
}

void ShortcutRecorder::keyDidPress(const QKeyEvent& event) {
  if (event.isAutoRepeat()) return;
  if (isModifierKey(event.key())) return showModifiers(modifiersOf(event.modifiers() | modifierOfKey(event.key())));
  if (event.modifiers() == Qt::NoModifier) {
    if (event.key() == Qt::Key_Escape) return endRecording();
    if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete) {
      endRecording();
      return choose(PTKeyCombo::clearKeyCombo());
    }
  }
  const bool isBacktab = event.key() == Qt::Key_Backtab && event.modifiers() == Qt::ShiftModifier;
  if (isBacktab || (event.key() == Qt::Key_Tab && event.modifiers() == Qt::NoModifier)) {
    endRecording();
    focusNextPrevChild(!isBacktab);
    return;
  }
  const auto keyCode = m_services.keyCode ? m_services.keyCode(event) : std::nullopt;
  if (!keyCode) {
    Q_EMIT said(u"This key cannot be part of a shortcut."_s, true);
    return;
  }
  consider(PTKeyCombo::keyComboWithKeyCode(*keyCode, modifiersOf(event.modifiers())));
}

void ShortcutRecorder::consider(const PTKeyCombo::Pointer& combo) {
  if (const LossForTyping loss = lossForTyping(*combo); loss != LossForTyping::None) {
    Q_EMIT said(refusal(loss, *combo), true);
    return updateText();
  }
  endRecording();
  // The agent has claimed that one itself.
  if (combo->isEqual(*m_combo)) return Q_EMIT said({}, false);
  m_trial.ask(*combo, [this, combo](const QString& problem) {
    if (problem.isEmpty()) return choose(combo);
    Q_EMIT said(u"%1 is not available: %2."_s.arg(wordsForKeyCombo(*combo), problem), true);
    updateText();
  });
  if (!m_trial.isAsking()) return;
  setText(wordsForKeyCombo(*combo));
  Q_EMIT said(u"The desktop is asked for %1…"_s.arg(wordsForKeyCombo(*combo)), false);
}

void ShortcutRecorder::choose(const PTKeyCombo::Pointer& combo) {
  m_trial.cancel();
  m_combo = combo;
  updateText();
  Q_EMIT said({}, false);
  Q_EMIT comboChosen(combo);
}

}  // namespace quillo
