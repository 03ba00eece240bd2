// Hours of use in minutes, at random: the real delegate, windows, settings and journals, on a clock that is moved.
//   SOAK_HOURS   simulated hours (4)          SOAK_SEED   what the randomness begins with (1)

#include "AppDelegateFixture.h"
#include "entry/AgentEntryWindow.h"
#include "entry/text/EntryViewTextView.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "reminders/ReminderCalculator.h"
#include "reminders/ReminderInterval.h"
#include "tests/support/FakeTimers.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QTest>

#include <malloc.h>

#include <algorithm>
#include <random>

namespace quillo {
namespace {

constexpr int actionsPerUse = 50;

struct Use {
  qint64 heap;  // bytes
  qint64 descriptors;
  qint64 threads;
};

Use useNow() {
  const auto count = [](const QString& directory) {
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
  };
  return {static_cast<qint64>(::mallinfo2().uordblks), count(u"/proc/self/fd"_s), count(u"/proc/self/task"_s)};
}

// After a quarter of the time everything that is made once has been made. From then on the heap grows by what the words
// leave in caches; a lost kilobyte each time the window is shown is ten times the limit.
void expectFlat(const std::vector<Use>& uses) {
  static constexpr qint64 bytesAnAction = 20;
  static constexpr qint64 noise = 96 * 1024;
  const size_t quarter = uses.size() / 4;
  ASSERT_GT(quarter, 0u);
  const auto ranked = [&](size_t from, qint64 Use::*what, size_t rank) {
    std::vector<qint64> values;
    for (size_t i = from; i < from + quarter; ++i) values.push_back(uses[i].*what);
    std::sort(values.begin(), values.end());
    return values[rank];
  };
  const auto growth = [&](qint64 Use::*what, size_t rank) {
    return ranked(3 * quarter, what, rank) - ranked(quarter, what, rank);
  };
  const qint64 heap = growth(&Use::heap, quarter / 2);
  EXPECT_LE(heap, noise + static_cast<qint64>(2 * quarter) * actionsPerUse * bytesAnAction);
  // The least of a quarter: the thread that reads the journal's tags comes and goes, and runs for long on a busy
  // machine.
  EXPECT_LE(growth(&Use::descriptors, 0), 0);
  EXPECT_LE(growth(&Use::threads, 0), 0);
  std::printf("heap %lld KiB, grown by %lld bytes; %lld descriptors, %lld threads\n", uses.back().heap / 1024, heap,
              uses.back().descriptors, uses.back().threads);
}

double number(const char* variable, double otherwise) {
  return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable).toDouble() : otherwise;
}

class Soak : public AppDelegateTest {
 protected:
  Soak() {
    for (const auto& name : {u"A"_s, u"B"_s})
      EXPECT_TRUE(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(name)), /*create=*/true, nullptr));
    QLJournalPackageFile::setDefaultPackageURLProvider([this] { return config().configuredJournalFileURL(); });
    timers.setTime(1395311400);
    makeDelegate(&outlets, timers, timers);
    moveJournal();
    for (const auto key : {Key::remindersEnabled, Key::remindersSendToNotificationCenter})
      list().setBoolForKey(true, key);
    delegate->showMainApplicationWindow();
    changeSettings();
  }
  ~Soak() override {
    delegate.reset();  // before the timers that it has armed
    QLJournalPackageFile::setDefaultPackageURLProvider({});
  }

  [[nodiscard]] int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
  [[nodiscard]] Date now() const { return Date::since1970(timers.secondsSince1970()); }

  [[nodiscard]] static AgentEntryWindow* window() {
    for (QWidget* widget : QApplication::topLevelWidgets())
      if (auto* entryWindow = qobject_cast<AgentEntryWindow*>(widget); entryWindow && entryWindow->isVisible())
        return entryWindow;
    return nullptr;
  }
  AgentEntryWindow* shownWindow() {
    if (!window()) toggle();
    EXPECT_TRUE(window());
    return window();
  }
  void toggle() { delegate->hitHotKey(nullptr); }

  void type() {
    const QString word = u"w%1"_s.arg(++words);
    const QString tag = below(4) == 0 ? u" #tag%1"_s.arg(below(9)) : QString();
    QTest::keyClicks(shownWindow()->findChild<EntryViewTextView*>(), word + tag + u' ');
  }
  void save() { QTest::keyClick(shownWindow()->findChild<EntryViewTextView*>(), Qt::Key_Return, Qt::ControlModifier); }
  void snooze() {
    AgentEntryWindow* const shown = window();
    auto* const button = shown ? shown->findChild<QAbstractButton*>(u"snoozeOption2Button"_s) : nullptr;
    if (!button || !button->isVisible()) return;
    button->click();
    if (!delegate->reminderAlarm().isSnoozing()) return;  // reminders are off
    next = delegate->reminderAlarm().nextAlarmDate();
    EXPECT_GT(*next, now());
  }
  void moveJournal() {
    list().setURLForKey(QUrl::fromLocalFile(home.path(below(2) ? u"A"_s : u"B"_s)), Key::journalPackageURL);
    distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  }
  void changeSettings() {
    static constexpr std::array units{CalendarUnit::Minute, CalendarUnit::Minute, CalendarUnit::Hour};
    interval.setCalendarUnit(units[static_cast<size_t>(below(3))]);
    interval.setIntervalValue(static_cast<quint64>(below(5) + 1));
    interval.setBaseDate(Date::since1970(1394485200 + below(86400)));
    interval.setBaseCalendar(Calendar::withTimeZoneName(u"UTC"_s));
    const auto other = PersistentPropertyList::withPropertyListURL(list().propertyListURL());
    interval.writeToUserDefaults(*other);
    for (const auto key : {Key::remindersOpenMenuBar, Key::remindersPlaySound})
      other->setBoolForKey(below(2) == 0, key);
    distributedCenter.postNotification(Notice::reminderSettingsDidChange);
    next = ReminderCalculator::firstReminderForInterval(interval, now(), std::nullopt);
  }
  void switchOffAndOn() {
    switchReminders(false);
    EXPECT_FALSE(delegate->reminderAlarm().nextAlarmDate());
    switchReminders(true);
    next = ReminderCalculator::firstReminderForInterval(interval, now(), std::nullopt);
  }

  // To `date`, with the reminders that are due until then; each has to come, and no other.
  void advanceTo(Date date) {
    EXPECT_EQ(delegate->reminderAlarm().nextAlarmDate(), next);
    qsizetype due = 0;
    for (; next && *next <= date; ++due)
      next = ReminderCalculator::firstReminderForInterval(interval, *next, std::nullopt);
    outlets.events.clear();
    timers.runUntil(date.timeIntervalSince1970());
    EXPECT_EQ(outlets.events.filter(u"notify"_s).size(), due);
    EXPECT_EQ(delegate->reminderAlarm().nextAlarmDate(), next);
    EXPECT_LE(outlets.standing.size(), 1);
    reminders += due;
  }

  void actAtRandom() {
    switch (below(12)) {
      case 0:
      case 1:
      case 2:
        return type();
      case 3:
        return save();
      case 4:
      case 5:
        return toggle();
      case 6:
        return snooze();
      case 7:
        return below(4) ? void() : moveJournal();
      case 8:
        return below(2) ? void() : changeSettings();
      case 9:
        return below(8) ? void(openedMenu()) : switchOffAndOn();
      default:
        return advanceTo(now().addingTimeInterval(below(60)));
    }
  }

  // The words that are in the journals. One that was typed while the journal became another may be in both.
  [[nodiscard]] QSet<QString> written() const {
    QSet<QString> found;
    for (const auto& name : {u"A"_s, u"B"_s}) {
      QSet<QString> here;
      const QLJournalIndex index(
          QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(name)), false, nullptr));
      for (const auto& entry : index.entries())
        for (const QString& word : entry->string().split(u' ', Qt::SkipEmptyParts)) {
          if (!word.startsWith(u'w')) continue;
          EXPECT_FALSE(here.contains(word)) << word.toStdString() << " is there twice";
          here << word;
        }
      found += here;
    }
    return found;
  }

  FakeTimers timers;
  ReminderInterval interval;
  std::optional<Date> next;
  std::mt19937 random{static_cast<unsigned>(number("SOAK_SEED", 1))};
  int words{0};
  qsizetype reminders{0};
};

TEST_F(Soak, LosesNothingAndGrowsByNothing) {
  const Date end = now().addingTimeInterval(number("SOAK_HOURS", 4) * 3600);
  std::vector<Use> uses;
  // Ends: one action in six moves the clock.
  for (int actions = 1; now() < end && !HasFailure(); ++actions) {
    actAtRandom();
    QCoreApplication::processEvents();
    if (actions % actionsPerUse != 0) continue;
    // Always in the same state.
    if (window()) toggle();
    QTest::qWait(100);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    uses.push_back(useNow());
  }
  if (window()) toggle();
  EXPECT_EQ(written().size(), words);
  expectFlat(uses);
  std::printf("%d words, %lld reminders\n", words, static_cast<long long>(reminders));
}

}  // namespace
}  // namespace quillo
