#pragma once

#include "PTHotKey/PTKeyCombo.h"
#include "preferences/model/ShortcutTrial.h"

#include <QPushButton>

#include <functional>
#include <optional>

class QKeyEvent;

namespace quillo {

struct ShortcutRecorderServices {
  // The virtual key code of the key that was pressed; nothing for a key that has none.
  std::function<std::optional<qint64>(const QKeyEvent& event)> keyCode;
  // Asked whether a combination is free; must outlive the recorder. Null where the desktop cannot be asked beforehand.
  HotKeys* hotKeys{nullptr};
};

// A field for a key that works from anywhere. A click or Space begins to record: the next combination is taken, by the
// names on the keyboard. Combinations that could no longer be typed, or that another program has claimed, are refused
// with the reason. Backspace clears the field, Escape and Tab leave it as it was.
class ShortcutRecorder : public QPushButton {
  Q_OBJECT

 public:
  explicit ShortcutRecorder(ShortcutRecorderServices services, QWidget* parent = nullptr);

  // The one that is in force; never null, the clear combination is none. Setting it is no choice of the user's.
  [[nodiscard]] const PTKeyCombo::Pointer& combo() const { return m_combo; }
  void setCombo(const PTKeyCombo::Pointer& combo);

  [[nodiscard]] bool isRecording() const { return m_isRecording; }
  [[nodiscard]] QSize sizeHint() const override;

 Q_SIGNALS:
  // The user's choice: a valid combination that is free, or the clear one.
  void comboChosen(const quillo::PTKeyCombo::Pointer& combo);
  // What is to be said beside the field; empty when there is nothing more to say.
  void said(const QString& text, bool isProblem);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void beginRecording();
  void endRecording();
  void keyDidPress(const QKeyEvent& event);
  void consider(const PTKeyCombo::Pointer& combo);
  void choose(const PTKeyCombo::Pointer& combo);
  void showModifiers(quint32 modifiers);
  void updateText();

  ShortcutRecorderServices m_services;
  ShortcutTrial m_trial;
  PTKeyCombo::Pointer m_combo;
  bool m_isRecording{false};
};

}  // namespace quillo
