// How long the entry's text view takes with one very long paragraph: from setting the text to the first painted frame,
// and from a key to the frame that shows it, the slowest of some at the end, in the middle and at the start. Prints one
// line a text; needs no display.
//
//   QT_QPA_PLATFORM=offscreen bench_LongParagraphBench [BYTES]

#include "controls/Fonts.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/text/EntryViewTextView.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

constexpr double givenUp = 20000;  // milliseconds

QString repeated(const QString& piece, qsizetype size) {
  QString text;
  while (text.size() < size) text += piece;
  return text.first(size);
}

// Letters that look like a picture's: 64 kinds in no order.
QString base64(qsizetype size) {
  QByteArray bytes;
  for (unsigned state = 1; bytes.size() < size; state = state * 1664525U + 1013904223U)
    bytes += static_cast<char>(state >> 24U);
  return QString::fromLatin1(bytes.toBase64()).first(size);
}

double timed(const std::function<void()>& work) {
  QElapsedTimer timer;
  timer.start();
  work();
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double key(EntryViewTextView& view, Qt::Key code, const QString& text = {},
           Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  return timed([&] {
    QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
    QCoreApplication::sendEvent(&view, &press);
    view.viewport()->repaint();
  });
}

double slowestKeyAt(EntryViewTextView& view, int position) {
  QTextCursor caret = view.textCursor();
  caret.setPosition(position);
  view.setTextCursor(caret);
  view.viewport()->repaint();
  double slowest = 0;
  for (int i = 0; i < 6 && slowest < givenUp; ++i) {
    slowest = std::max(slowest, key(view, Qt::Key_X, u"x"_s));
    slowest = std::max(slowest, key(view, Qt::Key_Space, u" "_s));
    slowest = std::max(slowest, key(view, Qt::Key_Left));
    slowest = std::max(slowest, key(view, Qt::Key_Backspace));
  }
  return slowest;
}

void measure(EntryViewTextView& view, const char* name, const QString& text) {
  const double opened = timed([&] {
    view.setString(text);
    view.moveCursor(QTextCursor::End);
    view.viewport()->repaint();
  });
  std::printf("%-22s open %8.1f ms", name, opened);
  if (opened < givenUp) {
    const int end = view.document()->characterCount() - 1;
    std::printf("   key at the end %7.1f ms", slowestKeyAt(view, end));
    std::printf("   in the middle %7.1f ms", slowestKeyAt(view, end / 2));
    std::printf("   at the start %7.1f ms", slowestKeyAt(view, 0));
    view.setString({});
    QGuiApplication::clipboard()->setText(text);
    std::printf("   paste %7.1f ms", key(view, Qt::Key_V, {}, Qt::ControlModifier));
    const double undone = key(view, Qt::Key_Z, {}, Qt::ControlModifier);
    std::printf("   undo %7.1f ms%s", undone, view.string().isEmpty() ? "" : " (text is not what it was)");
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const qsizetype size = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 1 << 20;
  const QString prose = u"Walked the long way home along the river, and it rained. "_s;

  const QTemporaryDir directory;
  UserDefaults defaults(directory.path(), u"bench"_s);
  NotificationCenter localCenter;
  SpellChecker spellChecker(SpellChecker::standardSources(UserDirectories::current()));
  EntryViewTextView view({.defaults = defaults, .localCenter = localCenter, .spellChecker = spellChecker});
  view.setFont(textFont(15));
  view.setTextContainerInset(QSizeF(4, 0));
  view.resize(296, 140);
  view.show();
  spellChecker.load();
  while (spellChecker.state() == SpellChecker::State::Loading)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);

  measure(view, "one letter", QString(size, u'a'));
  measure(view, "base64", base64(size));
  measure(view, "prose in one line", repeated(prose, size));
  measure(view, "prose in paragraphs", repeated(prose + prose + u'\n', size));
  return 0;
}
