// The floor of a hot key's way to the screen: an empty window of the entry window's size and kind, shown and hidden by
// the same grab.
//   bench_hotkey_window X Y WIDTH HEIGHT
#include "platform/linux/desktop/X11HotKeys.h"

#include <QApplication>
#include <QPainter>
#include <QWidget>

#include <iostream>

using namespace quillo;

namespace {

constexpr quint32 keyK = 40;

class Bare final : public QWidget {
 public:
  Bare() : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setAttribute(Qt::WA_TranslucentBackground);
  }

 protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), Qt::white); }
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList words = QApplication::arguments();
  if (words.size() != 5) return 2;
  Bare window;
  window.setGeometry(words[1].toInt(), words[2].toInt(), words[3].toInt(), words[4].toInt());
  X11HotKeys hotKeys;
  hotKeys.installEventHandler([&window](const HotKeyEvent& event) {
    if (event.kind != HotKeyEvent::pressed) return HotKeyStatus::done;
    if (window.isVisible()) {
      window.hide();
    } else {
      window.show();
      window.raise();
      window.activateWindow();
    }
    return HotKeyStatus::done;
  });
  HotKeyRef ref = 0;
  const OSStatus status = hotKeys.registerHotKey(keyK, HotKeyModifier::command | HotKeyModifier::shift, {0, 1}, &ref);
  std::cout << (status == HotKeyStatus::done ? "ready" : "refused") << std::endl;
  return QApplication::exec();
}
