#pragma once

#include "config/Keys.h"
#include "entry/spelling/SpellChecker.h"
#include "entry/spelling/SpellingHighlighter.h"
#include "entry/text/EntryViewTextView.h"
#include "entry/text/TextChecking.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "tests/support/TestHome.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

// A text view in a window of its own, with a dictionary of a few words.
class EntryViewTest : public testing::Test {
 protected:
  EntryViewTest() {
    readDefaults();
    writeDictionary(u"en_US"_s, "UTF-8",
                    {"the", "word", "words", "walked", "light", "river", "well", "don't", "isn't", "example", "he"});
    newChecker();
  }

  UserDefaults& defaults() { return *ownDefaults; }
  // From disk, as the next start of the program does; no view may stand.
  void readDefaults() { ownDefaults = std::make_unique<UserDefaults>(home.path(), u"own"_s); }

  // The words in the bytes of `encoding`.
  void writeDictionary(const QString& name, const QByteArray& encoding, const QList<QByteArray>& words,
                       const QByteArray& alphabet = "esianrtolcdugmphbyfvkwxzjq") {
    QDir().mkpath(home.path(u"dictionaries"_s));
    const QString base = home.path(u"dictionaries/"_s + name);
    write(base + u".aff"_s, "SET " + encoding + "\nTRY " + alphabet + "\n");
    write(base + u".dic"_s, QByteArray::number(words.size()) + '\n' + words.join('\n') + '\n');
  }
  static void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }

  SpellChecker::Sources sources(const QStringList& languages = {u"en-US"_s}) const {
    return {languages, {home.path(u"dictionaries"_s)}, home.path(u"data/LearnedWords.txt"_s)};
  }
  void newChecker() {
    view.reset();
    checker = std::make_unique<SpellChecker>(sources());
  }
  // With the dictionary read, unless `load` is false.
  void show(bool load = true) {
    view = std::make_unique<EntryViewTextView>(
        EntryTextServices{.defaults = defaults(), .localCenter = localCenter, .spellChecker = *checker});
    view->resize(320, 150);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    if (load) waitForDictionary(*checker);
  }
  static void waitForDictionary(SpellChecker& which) {
    which.load();
    ASSERT_TRUE(QTest::qWaitFor([&] { return which.state() != SpellChecker::State::Loading; }, 60000));
  }

  void type(const QString& text) {
    for (const QChar c : text) {
      if (c == u'\n')
        QTest::keyClick(view.get(), Qt::Key_Return);
      else
        QTest::sendKeyEvent(QTest::Click, view.get(), Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
  }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(view.get(), key, modifiers);
  }
  void paste(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
    press(Qt::Key_V, Qt::ControlModifier);
  }
  void compose(const QString& preedit, const QString& commit = {}) {
    QInputMethodEvent event(preedit, {});
    event.setCommitString(commit);
    QCoreApplication::sendEvent(view.get(), &event);
  }
  void select(int start, int end) {
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
  }
  void finishChecking() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->checking().highlighter()->isIdle(); }, 60000));
  }
  // The words that are underlined, in order.
  QStringList misspelled() {
    finishChecking();
    const QString text = view->document()->toRawText();
    QStringList words;
    for (const TextRange& range : view->checking().highlighter()->misspellings())
      words << text.mid(range.location, range.length);
    return words;
  }
  std::unique_ptr<QMenu> menuAt(int position) {
    QTextCursor cursor(view->document());
    cursor.setPosition(position);
    return view->menuForEvent({QContextMenuEvent::Mouse, view->cursorRect(cursor).center(), QPoint()});
  }
  // The item with this title anywhere in the menu; null for none.
  static QAction* item(const QMenu& menu, const QString& title) {
    for (QAction* action : menu.actions()) {
      if (action->text() == title) return action;
      if (!action->menu()) continue;
      if (QAction* found = item(*action->menu(), title)) return found;
    }
    return nullptr;
  }

  TestHome home;
  NotificationCenter localCenter;
  std::unique_ptr<UserDefaults> ownDefaults;
  std::unique_ptr<SpellChecker> checker;
  std::unique_ptr<EntryViewTextView> view;
};

}  // namespace quillo
