// When and where an entry was, and its tags, changed in the journal's window.

#include "JournalWindowFixture.h"
#include "entry/text/HashtagCompletionList.h"
#include "journal/editor/SuggestingField.h"
#include "journal/views/MonthView.h"
#include "qlcore/EntryTime.h"

#include <QApplication>
#include <QDateTimeEdit>
#include <QLabel>
#include <QToolButton>

namespace quillo {
namespace {

class EntryDetailsTest : public JournalWindowTest {
 protected:
  std::shared_ptr<QLJournalEntryFile> onDisk(const QString& identifier) {
    return QLJournalEntryFile::entryWithUUID(*package, identifier, nullptr);
  }
  QDateTime readingOnDisk(const QString& identifier) {
    const auto entry = onDisk(identifier);
    return localTime(entry->creationDate(), entry->timeZone());
  }
  template <typename Field = QLineEdit>
  Field& field(const QString& name) {
    for (Field* field : editor().detailsView().findChildren<Field*>())
      if (field->accessibleName() == name) return *field;
    ADD_FAILURE() << name.toStdString();
    std::abort();
  }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* popup = QApplication::activePopupWidget();
    QTest::keyClick(popup ? popup : QApplication::focusWidget(), key, modifiers);
  }
  void replace(QLineEdit& field, const QString& text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
  }
};

TEST_F(EntryDetailsTest, MovesAnEntryToAnotherDayWithTheKeyboardAndTakesItBack) {
  const QString identifier = write(u"about the river"_s);
  write(u"long ago"_s, 20);
  open();
  waitForText(u"about the river"_s);
  const QDateTime before = readingOnDisk(identifier);
  QTest::keyClick(window.get(), Qt::Key_I, Qt::ControlModifier);
  ASSERT_TRUE(editor().detailsView().isVisible());
  auto& when = field<QDateTimeEdit>(u"Date and time"_s);
  EXPECT_TRUE(when.hasFocus());
  when.setSelectedSection(QDateTimeEdit::YearSection);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  const QDate moved = when.date();
  ASSERT_NE(moved, before.date());
  EXPECT_EQ(readingOnDisk(identifier), QDateTime(moved, before.time(), before.timeSpec(), before.offsetFromUtc()));
  EXPECT_TRUE(runUntil([&] { return list().rows().days().last().day == moved; }));
  EXPECT_EQ(list().currentIdentifier(), identifier);
  EXPECT_TRUE(runUntil([&] { return list().rows().dayOfRow(list().currentRow()) == moved; }));
  EXPECT_EQ(window->view().month->currentDay(), moved);

  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(readingOnDisk(identifier), before);
  press(Qt::Key_Escape);
  EXPECT_FALSE(editor().detailsView().isVisible());
  EXPECT_TRUE(textView().hasFocus());

  // The notice offers it back, and so does the key when the strip is closed.
  QTest::keyClick(window.get(), Qt::Key_I, Qt::ControlModifier);
  when.setSelectedSection(QDateTimeEdit::YearSection);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  press(Qt::Key_Escape);
  ASSERT_TRUE(textView().hasFocus());
  ASSERT_NE(readingOnDisk(identifier), before);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(readingOnDisk(identifier), before);
}

TEST_F(EntryDetailsTest, AnotherZoneKeepsTheReadingOfTheClock) {
  const QString identifier = write(u"Landed"_s);
  open();
  waitForText(u"Landed"_s);
  const QDateTime before = readingOnDisk(identifier);
  window->commands().details->trigger();
  auto& zone = field<SuggestingField>(u"Time zone"_s);
  replace(zone, u"tok"_s);
  press(Qt::Key_Return);
  EXPECT_EQ(zone.text(), u"Asia/Tokyo"_s);
  EXPECT_EQ(onDisk(identifier)->timeZone(), u"Asia/Tokyo"_s);
  EXPECT_EQ(readingOnDisk(identifier).time(), before.time());
  EXPECT_EQ(readingOnDisk(identifier).offsetFromUtc(), 9 * 3600);
  // Half a name counts with Return alone.
  replace(zone, u"new"_s);
  press(Qt::Key_Escape);
  field<SuggestingField>(u"Tags"_s).setFocus();
  EXPECT_EQ(zone.text(), u"Asia/Tokyo"_s);
  EXPECT_EQ(onDisk(identifier)->timeZone(), u"Asia/Tokyo"_s);
  // What is none is said, and nothing changes.
  replace(zone, u"nowhere"_s);
  press(Qt::Key_Return);
  EXPECT_TRUE(notices().text().contains(u"no time zone"_s));
  EXPECT_EQ(zone.text(), u"Asia/Tokyo"_s);
}

TEST_F(EntryDetailsTest, TagsAreCompletedAndStandBesideThoseOfTheText) {
  tagsInUse = {u"evening"_s, u"eve"_s};
  const QString identifier = write(u"Out late #walk"_s, 0, {u"walk"_s});
  open();
  waitForText(u"Out late #walk"_s);
  window->commands().details->trigger();
  auto& tags = field<SuggestingField>(u"Tags"_s);
  EXPECT_EQ(tags.text(), u"walk"_s);
  EXPECT_TRUE(runUntil([&] { return !editor().session().tags().tags().isEmpty(); }));
  tags.setFocus();
  tags.end(false);
  QTest::keyClicks(&tags, u", ev"_s);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(tags.text(), u"walk, evening, "_s);
  press(Qt::Key_Return);
  EXPECT_EQ(onDisk(identifier)->tags(), (QStringList{u"walk"_s, u"evening"_s}));

  replace(tags, u"evening"_s);
  press(Qt::Key_Return);
  EXPECT_EQ(onDisk(identifier)->tags(), QStringList{u"evening"_s});
  EXPECT_TRUE(notices().text().contains(u"#walk"_s));
  textView().moveCursor(QTextCursor::End);
  QTest::keyClicks(&textView(), u" and #rain"_s);
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(onDisk(identifier)->tags(), (QStringList{u"evening"_s, u"rain"_s}));
}

TEST_F(EntryDetailsTest, APlaceIsFoundNamedAndTakenAwayAndItsWeatherWithIt) {
  const QString identifier = write(u"At the sea"_s, 2);
  const auto placed = onDisk(identifier);
  placed->setLocation(QLLocation{52.52, 13.405, u"Home"_s});
  placed->setWeather(mildWeather());
  ASSERT_TRUE(placed->saveToJournal(package.get(), nullptr));
  open();
  waitForText(u"At the sea"_s);
  window->commands().details->trigger();
  auto& place = field<SuggestingField>(u"Place"_s);
  auto& name = field(u"Name of the place"_s);
  EXPECT_EQ(place.text(), u"Berlin, Germany"_s);
  EXPECT_EQ(name.text(), u"Home"_s);
  replace(name, u"The attic"_s);
  press(Qt::Key_Return);
  EXPECT_EQ(onDisk(identifier)->location(), (QLLocation{52.52, 13.405, u"The attic"_s}));
  EXPECT_TRUE(onDisk(identifier)->weather());

  replace(place, u"osl"_s);
  press(Qt::Key_Return);
  EXPECT_EQ(onDisk(identifier)->location().value_or(QLLocation()).placeName, u"Oslo, Norway"_s);
  EXPECT_FALSE(onDisk(identifier)->weather());
  // Only that of now can be looked up.
  EXPECT_TRUE(weather.asked.empty());
  QTest::mouseClick(&field<QPushButton>(QString()), Qt::LeftButton);
  EXPECT_FALSE(onDisk(identifier)->location());
  EXPECT_TRUE(editor().undoDetails() && editor().undoDetails());
  EXPECT_TRUE(onDisk(identifier)->weather());
}

TEST_F(EntryDetailsTest, ThePlaceOfAnEntryOfNowBringsItsWeather) {
  const QString identifier = write(u"Here"_s);
  open();
  waitForText(u"Here"_s);
  window->commands().details->trigger();
  replace(field<SuggestingField>(u"Place"_s), u"oslo"_s);
  press(Qt::Key_Return);
  ASSERT_EQ(weather.asked.size(), 1U);
  weather.succeed(mildWeather());
  EXPECT_TRUE(runUntil([&] { return onDisk(identifier)->weather().has_value(); }));
}

TEST_F(EntryDetailsTest, WhatIsTypedStaysWithItsEntry) {
  const QString older = write(u"older"_s, 1, {u"old"_s});
  const QString newer = write(u"newer"_s, 0, {u"new"_s});
  open();
  waitForText(u"newer"_s);
  window->commands().details->trigger();
  replace(field<SuggestingField>(u"Tags"_s), u"mine"_s);
  window->commands().nextEntry->trigger();
  waitForText(u"older"_s);
  EXPECT_EQ(onDisk(newer)->tags(), QStringList{u"mine"_s});
  EXPECT_EQ(field<SuggestingField>(u"Tags"_s).text(), u"old"_s);
  // Typed, and taken back by hand.
  QTest::keyClicks(&field<SuggestingField>(u"Tags"_s), u"x"_s);
  press(Qt::Key_Backspace);
  window->commands().previousEntry->trigger();
  waitForText(u"newer"_s);
  textView().setFocus();
  EXPECT_EQ(onDisk(newer)->tags(), QStringList{u"mine"_s});
  EXPECT_EQ(onDisk(older)->tags(), QStringList{u"old"_s});
}

TEST_F(EntryDetailsTest, ANewEntryIsBegunOnTheDayOfTheCalendarAndComesIntoView) {
  for (int i = 0; i < 90; ++i) write(u"of today"_s);
  open();
  waitForRows(90);
  const QDate day = QDate::currentDate().addDays(-3);
  MonthView& month = *window->view().month;
  month.setFocus();
  for (int i = 0; i < 3; ++i) QTest::keyClick(&month, Qt::Key_Left);
  QTest::keyClick(&month, Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(textView().hasFocus());
  QTest::keyClicks(&textView(), u"What I forgot"_s);
  EXPECT_TRUE(editor().save());
  waitForRows(91);
  const QString identifier = editor().entry()->uuid();
  EXPECT_EQ(readingOnDisk(identifier).date(), day);
  EXPECT_LE(qAbs(readingOnDisk(identifier).time().secsTo(QTime::currentTime())), 60);
  EXPECT_EQ(list().currentIdentifier(), identifier);
  const auto isInView = [&] {
    const int row = list().currentRow();
    return row >= 0 && list().viewport()->rect().contains(list().rowRect(row));
  };
  EXPECT_TRUE(runUntil(isInView)) << list().currentRow();
  // Of another day, no place is looked up.
  EXPECT_EQ(location, nullptr);
}

TEST_F(EntryDetailsTest, ANewEntryOfNowGetsItsPlaceLaterAndCanLoseIt) {
  write(u"older"_s, 1);
  open();
  waitForText(u"older"_s);
  window->commands().newEntry->trigger();
  QTest::keyClicks(&textView(), u"Here"_s);
  EXPECT_TRUE(runUntil([&] { return location && location->isSearching(); }));
  EXPECT_TRUE(editor().details().contains(u"Finding the place"_s)) << editor().details().toStdString();
  EXPECT_TRUE(editor().save());
  const QString identifier = editor().entry()->uuid();
  EXPECT_FALSE(onDisk(identifier)->location());
  location->find(berlin(), 20, true);
  weather.succeed(mildWeather());
  EXPECT_TRUE(runUntil([&] { return onDisk(identifier)->weather().has_value(); }));
  EXPECT_EQ(onDisk(identifier)->location(), *berlin());

  // What comes late is not for the next one.
  window->commands().newEntry->trigger();
  EXPECT_TRUE(runUntil([&] { return location->searches == 2; }));
  location->find(berlin(), 20, false);
  const auto answer = weather.succeed;
  list().setCurrentRow(1);
  waitForText(u"older"_s);
  EXPECT_FALSE(location->isSearching());
  answer(mildWeather());
  EXPECT_TRUE(editor().save());
  EXPECT_FALSE(onDisk(list().currentIdentifier())->weather());
  config.groupProperties()->setBoolForKey(false, Key::addLocationAutomatically);
  window->commands().newEntry->trigger();
  handlePendingEvents();
  EXPECT_EQ(location->searches, 2);
}

TEST_F(EntryDetailsTest, EscapeLeadsFromTheTextToTheListAndToAllEntries) {
  tagsInUse = {u"anna"_s};
  write(u"one"_s);
  write(u"two"_s, 3);
  open();
  waitForRows(2);
  MonthView& month = *window->view().month;
  const QDate day = QDate::currentDate().addDays(-3);
  month.setSelectedDay(day);
  month.setFocus();
  QTest::keyClick(&month, Qt::Key_Return);
  waitForRows(1);
  waitForText(u"two"_s);
  const auto chips = [&] {
    handlePendingEvents();
    QStringList texts;
    for (const QToolButton* chip : window->view().search->findChildren<QToolButton*>())
      if (!chip->isHidden()) texts << chip->text();
    return texts;
  };
  EXPECT_EQ(chips().size(), 1);
  QTest::keyClick(&month, Qt::Key_Y);
  EXPECT_EQ(chips(), QStringList{QString::number(day.year()) + u"  \u2715"_s});

  textView().setFocus();
  textView().moveCursor(QTextCursor::End);
  (void)editor().session().tags().tags();
  handlePendingEvents();
  QTest::keyClicks(&textView(), u" #a"_s);
  auto* completions = window->findChild<HashtagCompletionList*>();
  ASSERT_TRUE(completions && completions->isVisible());
  QTest::keyClick(&textView(), Qt::Key_Escape);
  EXPECT_FALSE(completions->isVisible());
  EXPECT_TRUE(textView().hasFocus());
  QTest::keyClick(&textView(), Qt::Key_Escape);
  EXPECT_TRUE(list().hasFocus());
  QTest::keyClick(&list(), Qt::Key_Escape);
  waitForRows(2);
  EXPECT_EQ(chips(), QStringList());
  for (QAction* page : {window->commands().read, window->commands().year}) {
    page->trigger();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(list().hasFocus()) << page->text().toStdString();
  }
}

}  // namespace
}  // namespace quillo
