#include "PTHotKey/PTKeyCodeTranslator.h"

#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr OSStatus noCharacter = -1;
constexpr char16_t unknownCharacter = u'\uFFFD';

// Stands in where nobody knows a layout.
class EmptyLayout final : public KeyboardLayout {
 public:
  QString localizedName() const override { return u"none"_s; }
  OSStatus translate(quint16, quint16, quint32, quint32, quint32, quint32&, std::span<char16_t>,
                     qsizetype& length) const override {
    length = 0;
    return noCharacter;
  }
};

class NoLayouts final : public KeyboardLayouts {
 public:
  std::shared_ptr<const KeyboardLayout> currentKeyboardLayout() override { return m_layout; }
  quint8 keyboardType() const override { return 0; }

 private:
  std::shared_ptr<const KeyboardLayout> m_layout{std::make_shared<EmptyLayout>()};
};

KeyboardLayouts& noLayouts() {
  static NoLayouts layouts;
  return layouts;
}

KeyboardLayouts*& sharedLayouts() {
  static KeyboardLayouts* layouts = &noLayouts();
  return layouts;
}

std::shared_ptr<PTKeyCodeTranslator>& cachedTranslator() {
  static std::shared_ptr<PTKeyCodeTranslator> translator;
  return translator;
}

}  // namespace

void PTKeyCodeTranslator::setKeyboardLayouts(KeyboardLayouts* layouts) {
  sharedLayouts() = layouts ? layouts : &noLayouts();
  cachedTranslator().reset();
}

std::shared_ptr<PTKeyCodeTranslator> PTKeyCodeTranslator::currentTranslator() {
  auto layout = sharedLayouts()->currentKeyboardLayout();
  auto& cached = cachedTranslator();
  if (!cached || cached->keyboardLayout() != layout) cached = std::make_shared<PTKeyCodeTranslator>(std::move(layout));
  return cached;
}

PTKeyCodeTranslator::PTKeyCodeTranslator(std::shared_ptr<const KeyboardLayout> layout)
    : m_keyboardLayout(std::move(layout)) {}

QString PTKeyCodeTranslator::translateKeyCode(qint16 keyCode) {
  std::array<char16_t, 4> buffer;
  buffer.fill(unknownCharacter);
  qsizetype length = 0;
  // The first unit counts, whatever the status and the length: of a dead key, which has no character of its own yet,
  // it is the accent on the key.
  m_keyboardLayout->translate(static_cast<quint16>(keyCode), KeyboardLayout::displayAction, /*modifierKeyState=*/0,
                              sharedLayouts()->keyboardType(), /*options=*/0, m_deadKeyState, buffer, length);
  return QString(QChar(buffer[0]));
}

QString PTKeyCodeTranslator::description() const {
  return u"PTKeyCodeTranslator layout=%1 (uchr)"_s.arg(m_keyboardLayout->localizedName());
}

}  // namespace quillo
