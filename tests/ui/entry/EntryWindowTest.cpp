// The entry window with real key and mouse events and a real journal on disk.

#include "entry/panels/AlertSheet.h"
#include "entry/text/HashtagCompletionList.h"
#include "tests/ui/entry/EntryWindowFixture.h"

#include <QAccessible>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QTimer>

namespace quillo {
namespace {

TEST_F(EntryWindowTest, ClosingKeepsTheTextAndTheEntryUntilItIsSaved) {
  show();
  type("one #tag");
  click("closeButton");
  EXPECT_FALSE(controller->window().isVisible());
  ASSERT_EQ(entries().size(), 1);
  const QString uuid = entries()[0]->uuid();

  show();
  EXPECT_EQ(textView()->toPlainText(), u"one #tag"_s);
  QTest::keyClick(textView(), Qt::Key_End);
  type(" two");
  controller->close();
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries()[0]->string(), u"one #tag two"_s);
  EXPECT_EQ(entries()[0]->tags(), QStringList{u"tag"_s});

  show();
  click("saveButton");
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), QString());
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries()[0]->uuid(), uuid);

  // So does the key, that of the number pad too.
  for (const auto& [key, pad] : {std::pair(Qt::Key_Return, Qt::NoModifier), {Qt::Key_Enter, Qt::KeypadModifier}}) {
    show();
    type("another");
    QTest::keyClick(textView(), key, Qt::ControlModifier | pad);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !controller->window().isVisible(); }, 2000));
    EXPECT_EQ(textView()->toPlainText(), QString());
  }
  EXPECT_EQ(entries().size(), 3);
}

TEST_F(EntryWindowTest, AFailedSaveIsReportedTwiceAndLosesNothing) {
  show();
  type("kept");
  // The journal turns into one of a newer version under the open window.
  PropertyListDictionary content{{u"formatVersion"_s, 99}};
  QFile file(journalURL.toLocalFile() + u"/Journal.plist"_s);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  const auto bytes = PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML);
  file.write(bytes.value_or(QByteArray()));
  file.close();
  alerts.expected = 2;
  click("saveButton");
  ASSERT_EQ(alerts.seen.size(), 2U);
  EXPECT_TRUE(alerts.seen[0].message.startsWith(u"The entry could not be saved: "_s + journalURL.toLocalFile()));
  EXPECT_TRUE(alerts.seen[0].message.contains(u"newer"_s));
  EXPECT_EQ(alerts.seen[0].informativeText, u"What you wrote is kept in this window."_s);
  EXPECT_EQ(alerts.seen[0].buttons, QStringList{u"OK"_s});
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);
}

TEST_F(EntryWindowTest, WithNoJournalTheAlertSaysWhereToConfigureOne) {
  show();
  type("kept");
  ASSERT_TRUE(QDir(journalURL.toLocalFile()).removeRecursively());
  alerts.expected = 1;
  controller->close();
  ASSERT_EQ(alerts.seen.size(), 1U);
  EXPECT_EQ(alerts.seen[0].message, u"Quillo Journal file not found"_s);
  const QString kept = u"What you wrote is kept, and comes back with the journal."_s;
  EXPECT_EQ(alerts.seen[0].informativeText,
            u"Configure the location in the application preferences."_s + u"\n\n"_s + kept);
  EXPECT_EQ(alerts.seen[0].buttons, (QStringList{u"Show Preferences"_s, u"Cancel"_s}));
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);

  // The next opening tells why, and offers no editor.
  show();
  EXPECT_TRUE(named<QWidget>("reconnectView")->isVisible());
  EXPECT_FALSE(named<QWidget>("entryContainerView")->isVisible());
  const QString reason = u"There is nothing at ~/J.quillojournal. Its drive may be unplugged, or the folder moved."_s;
  EXPECT_EQ(named<QLabel>("reconnectReason")->text().remove(QChar(0x200b)), reason);
  EXPECT_EQ(named<QLabel>("reconnectAboutText")->text(), kept);
  EXPECT_EQ(named<QWidget>("reconnectView")->accessibleName(),
            u"The journal cannot be reached. "_s + reason + u' ' + kept);
  // Keys of somebody who expects the editor do no harm; on purpose, they reach the button.
  for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Tab}) {
    EXPECT_TRUE(openPanel.title.isEmpty());
    QTest::keyClick(controller->window().focusWidget(), key);
  }
  QTest::keyClick(controller->window().focusWidget(), Qt::Key_Space);
  EXPECT_FALSE(openPanel.title.isEmpty());
  alerts.expected = 1;
  controller->close();

  // Where nothing was written, nothing is said of it.
  textView()->clear();
  show();
  EXPECT_FALSE(named<QLabel>("reconnectAboutText")->isVisible());
}

TEST_F(EntryWindowTest, NoKeyDismissesTheWindowAndTheKeyboardReachesEverything) {
  show();
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&controller->window())->role(), QAccessible::Dialog);
  type("x");
  for (const auto key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(textView(), key);
  EXPECT_TRUE(controller->window().isVisible());
  QStringList order;
  const QStringList expected{u"textView"_s,       u"saveButton"_s, u"openJournalButton"_s, u"locationToggleButton"_s,
                             u"settingsButton"_s, u"closeButton"_s};
  for (int i = 0; i < expected.size(); ++i) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_TRUE(focused);
    order << focused->objectName();
    EXPECT_FALSE(focused->accessibleName().isEmpty()) << focused->objectName().toStdString();
    EXPECT_FALSE(focused->toolTip().isEmpty()) << focused->objectName().toStdString();
    QTest::keyClick(focused, Qt::Key_Tab);
  }
  EXPECT_EQ(order, expected);
}

TEST_F(EntryWindowTest, WhereItIsSetEscapeClosesTheListAndThenTheWindow) {
  PersistentPropertyList& list = *config.groupProperties();
  list.setBoolForKey(true, Key::escapeClosesEntryWindow);
  show();
  type("by the #ev");
  ASSERT_TRUE(tagsAnswer);
  tagsAnswer({u"evening"_s});
  ASSERT_TRUE(QTest::qWaitFor([this] { return controller->window().findChild<HashtagCompletionList*>() != nullptr; }));
  QTest::keyClick(textView(), Qt::Key_Escape);
  EXPECT_TRUE(controller->window().isVisible());
  // With another key it is another command; those of the desktop among them.
  QTest::keyClick(textView(), Qt::Key_Escape, Qt::ShiftModifier);
  EXPECT_TRUE(controller->window().isVisible());
  QTest::keyClick(textView(), Qt::Key_Escape);
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(entries().size(), 1);

  // Whatever has the keyboard, and also where a reminder opened the window; the text goes on.
  controller->showWindowInMode(EntryWindowModeReminder);
  EXPECT_EQ(textView()->toPlainText(), u"by the #ev"_s);
  textView()->clear();
  QTest::keyClick(named<QWidget>("saveButton"), Qt::Key_Escape);
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_TRUE(entries().isEmpty());
  config.setConfiguredJournalFileURL(std::nullopt);
  show();
  QTest::keyClick(named<QWidget>("reconnectView"), Qt::Key_Escape);
  EXPECT_FALSE(controller->window().isVisible());
}

TEST_F(EntryWindowTest, EveryCharacterReachesTheEntryAndNoFormatOrDropDoes) {
  show();
  const auto paste = [this](const QString& html, const QString& text) {
    auto* data = new QMimeData;
    if (!html.isNull()) data->setHtml(html);
    if (!text.isNull()) data->setText(text);
    QGuiApplication::clipboard()->setMimeData(data);
    QTest::keyClick(textView(), Qt::Key_V, Qt::ControlModifier);
  };
  paste({}, u"a\u00a0b\t\u2028c \U0001F4DD\n"_s);
  QTest::keyClick(textView(), Qt::Key_Return, Qt::ShiftModifier);
  paste(u"<b>bold</b> &amp; text"_s, {});
  paste(u"<b>and</b> more"_s, u" and more"_s);
  EXPECT_FALSE(textView()->document()->toHtml().contains(u"font-weight:700"_s));
  EXPECT_FALSE(textView()->acceptDrops() || textView()->viewport()->acceptDrops());
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"a\u00a0b\t\nc \U0001F4DD\n\nbold & text and more"_s);
}

TEST_F(EntryWindowTest, AtTheEndOfTheProcessTextIsSavedAndNobodyIsAsked) {
  show();
  type("last words");
  EXPECT_TRUE(controller->saveForTermination());
  EXPECT_EQ(entries().value(0)->string(), u"last words"_s);
  breakJournal();
  type("!");
  const LogCapture log;
  EXPECT_FALSE(controller->saveForTermination());
  ASSERT_FALSE(log.lines().isEmpty());
  EXPECT_TRUE(log.lines().last().contains(journalURL.toLocalFile()));
}

TEST_F(EntryWindowTest, WhatAnInputMethodHasNotCommittedIsText) {
  show();
  type("kept ");
  const auto compose = [this] {
    QInputMethodEvent event(u"\u304b"_s, {});
    QCoreApplication::sendEvent(textView(), &event);
  };
  compose();
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"kept \u304b"_s);
  show();
  compose();
  click("saveButton");
  EXPECT_EQ(entries().value(0)->string(), u"kept \u304b\u304b"_s);
  EXPECT_EQ(textView()->toPlainText(), QString());
}

TEST_F(EntryWindowTest, WithoutACompositorTheWindowIsCutToItsOutline) {
  show();
  AgentEntryWindow& window = controller->window();
  EXPECT_TRUE(window.mask().isEmpty());
  const QRectF frame = window.frame();
  controller->close();
  isComposited = false;
  show();
  EXPECT_EQ(window.size(), AgentEntryWindow::frameSize.toSize());
  EXPECT_EQ(window.frame(), frame);
  EXPECT_FALSE(window.mask().contains(QPoint(0, 10)));  // a rounded corner
  EXPECT_FALSE(window.mask().contains(QPoint(60, 4)));  // beside the arrow
  EXPECT_TRUE(window.mask().contains(QPoint(164, 4)));
  EXPECT_TRUE(window.mask().contains(QPoint(2, 150)));
}

TEST_F(EntryWindowTest, AnAlertHangsOnTheWindowAndShowsTextAsItIs) {
  show();
  AlertSheet sheet;
  const Alert question{u"<b>not bold</b>"_s, u"Really?"_s, {u"Do"_s, u"Do && Not"_s}};
  AgentEntryWindow& window = controller->window();
  const auto press = [&window](Qt::Key key) {
    auto* box = window.findChild<QMessageBox*>();
    ASSERT_TRUE(box);
    EXPECT_TRUE(window.hasAttachedSheet());
    EXPECT_EQ(box->windowModality(), Qt::WindowModal);
    EXPECT_EQ(box->textFormat(), Qt::PlainText);
    QTest::keyClick(box, key);
  };
  const struct {
    Qt::Key key;
    int answer;
  } cases[] = {{Qt::Key_Return, 0}, {Qt::Key_Escape, 1}};
  for (const auto& c : cases) {
    QList<int> answers;
    sheet.beginSheet(question, &window, [&](int answer) { answers << answer; });
    press(c.key);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTimer::singleShot(0, [&] { press(c.key); });
    answers << sheet.runAlert(question, &window);
    EXPECT_EQ(answers, (QList<int>{c.answer, c.answer}));
    EXPECT_FALSE(window.hasAttachedSheet());
  }
  // What goes with its window is not answered.
  sheet.beginSheet(question, &window, [](int) { ADD_FAILURE(); });
  QTimer::singleShot(0, [&] { controller->close(); });
  EXPECT_EQ(sheet.runAlert(question, &window), 1);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(window.findChild<QMessageBox*>());
}
TEST_F(EntryWindowTest, TagsAreAskedForAtTheFirstHashtagOfEachShowing) {
  const auto isListOpen = [this] {
    const auto* list = controller->window().findChild<HashtagCompletionList*>();
    return list && list->isVisible();
  };
  for (int showing = 1; showing <= 2; ++showing) {
    show();
    QTest::keyClick(textView(), Qt::Key_End);
    type(" word ");
    EXPECT_EQ(tagQuestions, showing - 1);
    type("#");
    ASSERT_TRUE(tagsAnswer);
    EXPECT_FALSE(isListOpen());
    tagsAnswer({u"work"_s});
    EXPECT_TRUE(isListOpen());
    type("x #w");
    EXPECT_TRUE(isListOpen());
    EXPECT_EQ(tagQuestions, showing);
    controller->close();
    EXPECT_FALSE(tagsAnswer) << "the question ends with the window";
  }
}

}  // namespace
}  // namespace quillo
