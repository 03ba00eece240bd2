#include "FormPicture.h"
#include "PreferencesFixture.h"
#include "foundation/FileContents.h"
#include "preferences/controls/FormRow.h"
#include "reminders/ReminderInterval.h"
#include "reminders/ReminderRule.h"
#include "tests/support/EventLoop.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTableView>
#include <QWheelEvent>

namespace quillo {
namespace {

using Page = PreferencesWindow::Page;

// Why a field was not saved.
QString errorBeside(const QWidget* field) {
  const auto* row = qobject_cast<const FormRow*>(field->parentWidget());
  return row ? row->error() : u"(no row)"_s;
}

// What a person does with a field.
enum class Act { Click, ChooseLast, Type, Press };

TEST_F(PreferencesTest, EachFieldWritesItsKeyAndPostsItsNotice) {
  using enum PreferencesWindow::Page;
  using enum Act;
  const QStringList general{Notice::settingsDidChange};
  const QStringList reminder{Notice::reminderSettingsDidChange};
  const PropertyListDictionary ctrlShiftJ{{u"keyCode"_s, 38}, {u"modifierFlags"_s, 0x1200}};
  const struct {
    Page page;
    QString field;
    Act act;
    QString key;
    PropertyListValue value;
    QStringList notices;
    QString text{};
  } rows[] = {
      // clang-format off
      {General, Key::fontSize, ChooseLast, Key::fontSize, 32, {Notice::fontSizeDidChange}},
      {General, Key::look, ChooseLast, Key::look, u"dark"_s, general},
      {General, Key::menuEntryGlobalShortcut, Press, Key::menuEntryGlobalShortcut, ctrlShiftJ, {Notice::menuBarEntryShortcutDidChange}},
      {General, Key::agentEnabled, Click, Key::agentEnabled, true, {Notice::agentManagerValuesDidChange}},
      {Backup, Key::autoBackupEnabled, Click, Key::autoBackupEnabled, true, general},
      {Backup, Key::autoBackupFrequency, ChooseLast, Key::autoBackupFrequency, 8, general},
      {Backup, Key::autoBackupMaxCount, ChooseLast, Key::autoBackupMaxCount, 0, general},
      {Reminders, u"remindersOn"_s, Click, Key::remindersEnabled, true,
       reminder + QStringList{Notice::agentManagerValuesDidChange, Notice::remindersManagerValuesDidChange}},
      {Reminders, u"reminderCount"_s, Type, Key::remindersInterval, 3, reminder, u"3"_s},
      {Reminders, u"reminderUnit"_s, ChooseLast, Key::remindersFrequency, 4, reminder},
      {Reminders, u"reminderSound"_s, Click, Key::remindersPlaySound, true, reminder},
      // The suggested ways, which come with the first rule.
      {Reminders, u"reminderWindow"_s, Click, Key::remindersOpenMenuBar, false, reminder},
      {Reminders, u"reminderNotification"_s, Click, Key::remindersSendToNotificationCenter, false, reminder},
      {PlaceAndWeather, Key::addLocationAutomatically, Click, Key::addLocationAutomatically, false, general},
      {PlaceAndWeather, Key::useFahrenheitTempScale, ChooseLast, Key::useFahrenheitTempScale, true,
       QStringList{Notice::tempScaleDidChange} + general},
      {PlaceAndWeather, Key::weatherServiceURL, Type, Key::weatherServiceURL, u"http://127.0.0.1:8/w"_s, general, u"http://127.0.0.1:8/w"_s},
      {PlaceAndWeather, u"PositionSource"_s, ChooseLast, {}, {}, {}},
      {PlaceAndWeather, Key::locationNMEASource, Type, Key::locationNMEASource, u"socket://127.0.0.1:8"_s, general, u"socket://127.0.0.1:8"_s},
      {Writing, Key::editorSpellCheckEnabled, Click, Key::editorSpellCheckEnabled, false, general},
      {Writing, Key::editorCorrectSpellingEnabled, Click, Key::editorCorrectSpellingEnabled, false, general},
      {Writing, Key::editorGrammarCheckEnabled, Click, Key::editorGrammarCheckEnabled, true, general},
      {Writing, Key::grammarServerURL, Type, Key::grammarServerURL, u"http://127.0.0.1:8"_s, general, u"http://127.0.0.1:8"_s},
      {Writing, Key::shouldAddHashtags, Click, Key::shouldAddHashtags, Key::hashtagsAreNotTags, general},
      {Writing, Key::markdownEnabled, Click, Key::markdownEnabled, true, QStringList{Notice::markdownDidChange} + general},
      {Advanced, Key::keepEntryWindowOnScreen, Click, Key::keepEntryWindowOnScreen, true, general},
      {Advanced, Key::escapeClosesEntryWindow, Click, Key::escapeClosesEntryWindow, true, general},
      {Advanced, Key::verboseLogging, Click, Key::verboseLogging, true, general},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.field.toStdString());
    open(row.page);
    QWidget* control = field(row.field);
    if (!control) continue;
    switch (row.act) {
      case Act::Click:
        QTest::mouseClick(control, Qt::LeftButton);
        break;
      case Act::ChooseLast:
        control->setFocus();
        QTest::keyClick(control, Qt::Key_End);
        break;
      case Act::Type:
        control->setFocus(Qt::TabFocusReason);
        QTest::keyClicks(control, row.text);
        QTest::keyClick(control, Qt::Key_Return);
        break;
      case Act::Press:
        QTest::mouseClick(control, Qt::LeftButton);
        QTest::keyClick(control, Qt::Key_J, Qt::ControlModifier | Qt::ShiftModifier);
        break;
    }
    if (row.key.isEmpty()) continue;
    EXPECT_EQ(distributed.posted, row.notices);
    const bool isOwn = settingForKey(row.key)->store == SettingStore::OwnDefaults;
    // On disk, as another program finds it.
    const auto there =
        isOwn ? UserDefaults(home.path(u"config"_s), Identifier::agent).objectForKey(row.key)
              : PersistentPropertyList::withPropertyListURL(list().propertyListURL())->valueForKey(row.key);
    EXPECT_EQ(there, row.value);
    if (isOwn) {
      EXPECT_EQ(own.objectForKey(row.key), row.value) << "in this program, too";
    }
  }
}

TEST_F(PreferencesTest, WhatAnotherProgramChangesShowsAtOnce) {
  open(Page::PlaceAndWeather);
  EXPECT_TRUE(field<QAbstractButton>(Key::addLocationAutomatically)->isChecked());
  setElsewhere(Key::addLocationAutomatically, false, Notice::settingsDidChange);
  EXPECT_FALSE(field<QAbstractButton>(Key::addLocationAutomatically)->isChecked());
  setElsewhere(Key::useFahrenheitTempScale, true, Notice::tempScaleDidChange);
  EXPECT_EQ(field<QComboBox>(Key::useFahrenheitTempScale)->currentText(), u"Fahrenheit"_s);

  open(Page::General);
  setElsewhere(Key::menuEntryGlobalShortcut, PropertyListDictionary{{u"keyCode"_s, 38}, {u"modifierFlags"_s, 0x100}},
               Notice::menuBarEntryShortcutDidChange);
  EXPECT_EQ(field<QAbstractButton>(Key::menuEntryGlobalShortcut)->text(), u"Super+J"_s);
  setElsewhere(Key::fontSize, 21, Notice::fontSizeDidChange);
  EXPECT_EQ(field<QComboBox>(Key::fontSize)->currentText(), u"21 points"_s);

  open(Page::Writing);
  UserDefaults(home.path(u"config"_s), Identifier::agent).setBoolForKey(true, Key::editorGrammarCheckEnabled);
  distributed.postNotification(Notice::settingsDidChange);
  EXPECT_TRUE(field<QAbstractButton>(Key::editorGrammarCheckEnabled)->isChecked());
}

TEST_F(PreferencesTest, WhatCannotBeSavedSaysWhyBesideItself) {
  const struct {
    Page page;
    QString field;
    QString text;
    QString error;
  } rows[] = {
      {Page::PlaceAndWeather, Key::weatherServiceURL, u"weather"_s,
       u"An address that begins with https:// is needed."_s},
      {Page::Writing, Key::grammarServerURL, u"http://192.168.0.1:8081"_s,
       u"Only a server on this computer is asked, such as http://localhost:8081."_s},
  };
  for (const auto& row : rows) {
    open(row.page);
    field(row.field)->setFocus();
    QTest::keyClicks(field(row.field), row.text);
    QTest::keyClick(field(row.field), Qt::Key_Return);
    EXPECT_EQ(errorBeside(field(row.field)), row.error);
    EXPECT_EQ(distributed.posted, QStringList());
    EXPECT_EQ(agentDefaults.objectForKey(row.field), std::nullopt);
    // What was typed is there to be mended.
    EXPECT_EQ(field<QLineEdit>(row.field)->text(), row.text);
  }
  open(Page::Reminders);
  QTest::mouseClick(field(u"remindersOn"_s), Qt::LeftButton);
  ASSERT_TRUE(list().boolForKey(Key::remindersEnabled));
  distributed.posted.clear();
  // A list that cannot be written.
  const QString path = list().propertyListURL().toLocalFile();
  ASSERT_TRUE(QFile::remove(path));
  ASSERT_TRUE(QDir().mkpath(path));
  // All else of the rule is as it is stored.
  QTest::mouseClick(field(u"remindersOn"_s), Qt::LeftButton);
  EXPECT_TRUE(errorBeside(field(u"reminderWindow"_s)).startsWith(u"Not saved: "_s));
  EXPECT_TRUE(field<QAbstractButton>(u"remindersOn"_s)->isChecked());
  open(Page::Advanced);
  QTest::mouseClick(field(Key::verboseLogging), Qt::LeftButton);
  EXPECT_TRUE(errorBeside(field(Key::verboseLogging)).startsWith(u"Not saved: "_s));
  // What is shown is what is in force.
  EXPECT_FALSE(field<QAbstractButton>(Key::verboseLogging)->isChecked());
  open(Page::General);
  auto* shortcut = field<QAbstractButton>(Key::menuEntryGlobalShortcut);
  const QString before = shortcut->text();
  QTest::mouseClick(shortcut, Qt::LeftButton);
  QTest::keyClick(shortcut, Qt::Key_J, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(errorBeside(shortcut).startsWith(u"Not saved: "_s));
  EXPECT_EQ(shortcut->text(), before);
  const QStringList loginEventsBefore = loginEvents;
  auto* agentSwitch = field<QAbstractButton>(Key::agentEnabled);
  ASSERT_TRUE(agentSwitch->isChecked()) << "the reminders need it";
  QTest::mouseClick(agentSwitch, Qt::LeftButton);
  EXPECT_TRUE(errorBeside(agentSwitch).startsWith(u"Not saved: "_s));
  EXPECT_TRUE(agentSwitch->isChecked());
  EXPECT_EQ(loginEvents, loginEventsBefore);
  EXPECT_EQ(distributed.posted, QStringList());
  // Nor does it come back once the list can be written.
  ASSERT_TRUE(QDir().rmdir(path));
  EXPECT_TRUE(list().synchronize());
  EXPECT_EQ(list().valueForKey(Key::menuEntryGlobalShortcut), std::nullopt);
}

TEST_F(PreferencesTest, TheAgentAndItsStartAtLogin) {
  open(Page::General);
  EXPECT_FALSE(field(u"StartsAtLogin"_s)->isEnabled());
  QTest::mouseClick(field(Key::agentEnabled), Qt::LeftButton);
  EXPECT_EQ(loginEvents, QStringList{u"enable com.quilloapp.quillo-agent"_s});
  auto* atLogin = field<QAbstractButton>(u"StartsAtLogin"_s);
  EXPECT_TRUE(atLogin->isEnabled() && atLogin->isChecked());
  // Off for the next login, and still there for this one.
  QTest::mouseClick(atLogin, Qt::LeftButton);
  EXPECT_EQ(loginEvents.last(), u"disable com.quilloapp.quillo-agent"_s);
  EXPECT_EQ(agent.started, 1);
  EXPECT_FALSE(atLogin->isChecked());
  items.enablingWorks = false;
  QTest::mouseClick(atLogin, Qt::LeftButton);
  EXPECT_EQ(errorBeside(atLogin), u"Not changed: it was told to fail"_s);
  EXPECT_FALSE(atLogin->isChecked());
}

TEST_F(PreferencesTest, RemindersCanBeTried) {
  list().setBoolForKey(true, Key::remindersEnabled);
  open(Page::Reminders);
  EXPECT_FALSE(field<QAbstractButton>(u"remindersOn"_s)->isChecked()) << "without a rule there are none";
  QTest::mouseClick(field(u"remindersOn"_s), Qt::LeftButton);
  QTest::mouseClick(field(u"tryReminder"_s), Qt::LeftButton);
  EXPECT_EQ(remindersTried, 1);
  agentRuns = false;
  QTest::mouseClick(field(u"tryReminder"_s), Qt::LeftButton);
  EXPECT_EQ(errorBeside(field(u"tryReminder"_s)), u"There is nobody to remind you: the quill is not in the tray"_s);
}

TEST_F(PreferencesTest, LearnedWordsAreTakenOffTheList) {
  for (const QString& word : {u"quillo"_s, u"hamster"_s, u"zebra"_s}) spellChecker.learnSpelling(word);
  open(Page::Writing);
  auto* words = field<QListWidget>(u"learnedWords"_s);
  ASSERT_EQ(words->count(), 3);
  EXPECT_FALSE(field(u"forgetWord"_s)->isEnabled());
  words->setFocus();
  words->setCurrentRow(1);
  QTest::keyClick(words, Qt::Key_Delete);
  EXPECT_EQ(*contentsOfFile(home.path(u"LearnedWords.txt"_s)), QByteArray("hamster\nzebra\n"));
  EXPECT_EQ(distributed.posted, QStringList{Notice::settingsDidChange});
  // Another program's checker must not bring it back.
  spellChecker.learnSpelling(u"iguana"_s);
  EXPECT_EQ(words->count(), 3);
  EXPECT_FALSE(spellChecker.learnedWords().contains(u"quillo"_s));
}

TEST_F(PreferencesTest, AnotherJournalIsChosenAndFolderShown) {
  open(Page::Journal);
  QTest::mouseClick(field(u"openJournalFolder"_s), Qt::LeftButton);
  EXPECT_EQ(workspace.opened, QStringList{journalURL.toString()});
  const QUrl before = journalURL;
  QTest::mouseClick(field(u"chooseJournal"_s), Qt::LeftButton);
  openPanel.choose(home.path(u"nowhere"_s));
  EXPECT_NE(errorBeside(field(u"chooseJournal"_s)), QString());
  EXPECT_EQ(config.configuredJournalFileURL(), before);
  const QUrl second = QUrl::fromLocalFile(home.path(u"Second.quillojournal"_s));
  ASSERT_TRUE(QLJournalPackageFile::openPackage(second, /*create=*/true, nullptr));
  openPanel.choose(second.toLocalFile());
  EXPECT_EQ(config.configuredJournalFileURL(), second);
  EXPECT_EQ(distributed.posted, QStringList{Notice::journalPackagePathDidChange});
  EXPECT_EQ(field<QLabel>(Key::journalPackageURL)->text(), u"Second"_s);
}

TEST_F(PreferencesTest, ANewJournalIsMadeAndNoOtherReplaced) {
  const QUrl before = journalURL;
  open(Page::Journal);
  const auto create = [this](const QString& name) {
    QTest::mouseClick(field(u"createJournal"_s), Qt::LeftButton);
    auto* panel = window->findChild<QFileDialog*>(u"createPanel"_s);
    ASSERT_NE(panel, nullptr);
    panel->setDirectory(home.path());
    panel->findChild<QLineEdit*>()->setText(name);
    QTest::keyClick(panel, Qt::Key_Return);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  };
  for (const QString& name : {u"J.quillojournal"_s, u"J"_s}) {
    create(name);
    EXPECT_NE(errorBeside(field(u"createJournal"_s)), QString()) << name.toStdString();
    EXPECT_EQ(distributed.posted, QStringList());
    EXPECT_EQ(config.configuredJournalFileURL(), before);
  }
  // With its ending or without.
  for (const QString& name : {u"Third.quillojournal"_s, u"Second"_s}) {
    distributed.posted.clear();
    create(name);
    EXPECT_EQ(errorBeside(field(u"createJournal"_s)), QString());
    EXPECT_EQ(distributed.posted, QStringList{Notice::journalPackagePathDidChange});
  }
  const QUrl second = QUrl::fromLocalFile(home.path(u"Second.quillojournal"_s));
  EXPECT_EQ(config.configuredJournalFileURL(), second);
  EXPECT_TRUE(QLJournalPackageFile::openPackage(second, /*create=*/false, nullptr));
  EXPECT_EQ(field<QLabel>(Key::journalPackageURL)->text(), u"Second"_s);
}

TEST_F(PreferencesTest, TheJournalMovesToAnotherFolder) {
  QLJournalEntryFile::newEntry()->saveToJournal(QLJournalPackageFile::openPackage(journalURL, false, nullptr).get(),
                                                nullptr);
  ASSERT_TRUE(QDir().mkpath(home.path(u"elsewhere"_s)));
  open(Page::Journal);
  QTest::mouseClick(field(u"moveJournal"_s), Qt::LeftButton);
  auto* panel = window->findChild<QFileDialog*>(u"movePanel"_s);
  ASSERT_NE(panel, nullptr);
  panel->setDirectory(home.path(u"elsewhere"_s));
  panel->findChild<QLineEdit*>()->setText(home.path(u"elsewhere"_s));
  QTest::keyClick(panel, Qt::Key_Return);
  EXPECT_FALSE(field(u"moveJournal"_s)->isEnabled()) << "one move at a time";
  const QUrl moved = QUrl::fromLocalFile(home.path(u"elsewhere/J.quillojournal"_s));
  EXPECT_TRUE(runUntil([&] { return config.configuredJournalFileURL() == moved; }));
  EXPECT_TRUE(distributed.posted.contains(QString(Notice::journalPackagePathDidChange)));
  EXPECT_TRUE(runUntil([&] { return field(u"moveJournal"_s)->isEnabled(); }));
  EXPECT_EQ(errorBeside(field(u"moveJournal"_s)), QString());
  journalURL = moved;
  EXPECT_EQ(entries().size(), 1);
}

// A wheel that scrolls the page goes over the fields.
TEST_F(PreferencesTest, TheWheelChangesNoFieldThatHasNotTheKeyboard) {
  open(Page::PlaceAndWeather);
  auto* scale = field<QComboBox>(Key::useFahrenheitTempScale);
  const auto turnWheel = [scale] {
    const QPointF middle = scale->rect().center();
    QWheelEvent event(middle, scale->mapToGlobal(middle), {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(scale, &event);
  };
  turnWheel();
  EXPECT_EQ(scale->currentText(), u"Celsius"_s);
  scale->setFocus();
  turnWheel();
  EXPECT_EQ(scale->currentText(), u"Fahrenheit"_s);
}

TEST_F(PreferencesTest, EverySettingCanBeTypedAsATable) {
  open(Page::Advanced);
  auto* table = field<QTableView>(u"settings"_s);
  QAbstractItemModel* model = table->model();
  const auto valueOf = [&](const QString& key) {
    const auto found = model->match(model->index(0, 0), Qt::DisplayRole, key, 1, Qt::MatchExactly);
    return found.value(0).siblingAtColumn(1);
  };
  const auto type = [&](const QString& key, const QString& text) {
    table->setFocus();
    table->setCurrentIndex(valueOf(key));
    QTest::keyClick(table, Qt::Key_F2);
    auto* editor = table->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    // The editor hands over what was typed, and goes.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  };
  type(Key::remindersInterval, u"7"_s);
  EXPECT_EQ(list().valueForKey(Key::remindersInterval), PropertyListValue(7));
  EXPECT_EQ(distributed.posted, QStringList{Notice::reminderSettingsDidChange});
  type(Key::remindersInterval, u"many"_s);
  EXPECT_EQ(list().valueForKey(Key::remindersInterval), PropertyListValue(7));
  EXPECT_EQ(field<FormRow>(u"settingsNote"_s)->error(),
            u"“many” is no value for RemindersInterval: a whole number is expected."_s);
  QTest::keyClick(table, Qt::Key_Delete);
  EXPECT_EQ(list().valueForKey(Key::remindersInterval), std::nullopt);
  EXPECT_FALSE(model->flags(valueOf(Key::allowWebInspector)) & Qt::ItemIsEditable);
}

TEST_F(PreferencesTest, TheKeyboardIsEnough) {
  open();
  auto* pages = window->findChild<QListWidget*>(u"pages"_s);
  ASSERT_TRUE(pages->hasFocus());
  for (int i = 0; i < PreferencesWindow::Reminders; ++i) QTest::keyClick(pages, Qt::Key_Down);
  EXPECT_EQ(window->currentPage()->accessibleName(), u"Reminders"_s);
  QTest::keyClick(pages, Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), u"remindersOn"_s);
  const auto* asRead = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
  EXPECT_EQ(asRead->text(QAccessible::Name), u"Remind me"_s);
  for (const auto& [key, modifiers] : {std::pair(Qt::Key_Escape, Qt::NoModifier), {Qt::Key_W, Qt::ControlModifier}}) {
    open();
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    EXPECT_FALSE(window->isVisible());
  }
}

// Every field of every page has a name to be read by.
TEST_F(PreferencesTest, EveryFieldHasAName) {
  for (int page = 0; page < PreferencesWindow::pages; ++page) {
    open(static_cast<Page>(page));
    const auto fields = window->currentPage()->findChildren<QWidget*>();
    for (QWidget* each : fields) {
      if (each->focusPolicy() == Qt::NoFocus || !each->isVisible() || each->objectName().startsWith(u"qt_"_s)) continue;
      const auto* asRead = QAccessible::queryAccessibleInterface(each);
      if (!asRead || asRead->role() == QAccessible::Client) continue;
      EXPECT_NE(asRead->text(QAccessible::Name), QString())
          << page << ' ' << each->metaObject()->className() << ' ' << each->objectName().toStdString();
    }
  }
}

TEST_F(PreferencesTest, Pictures) {
  if (qEnvironmentVariableIsEmpty("QUILLO_PICTURES")) GTEST_SKIP() << "only for people";
  ReminderRule rule{.count = 3, .unit = CalendarUnit::Hour, .starting = Date::now()};
  rule.window = DailyWindow{9 * 60, 17 * 60};
  rule.interval()->writeToUserDefaults(list());
  for (const auto key :
       {Key::remindersEnabled, Key::agentEnabled, Key::remindersOpenMenuBar, Key::remindersSendToNotificationCenter})
    list().setBoolForKey(true, key);
  items.jobs << LoginJob{Identifier::agent, true};
  list().setValueForKey(PropertyListDictionary{{u"keyCode"_s, 38}, {u"modifierFlags"_s, 0x300}},
                        Key::menuEntryGlobalShortcut);
  for (const QString& word : {u"quillo"_s, u"Grasmere"_s}) spellChecker.learnSpelling(word);
  QPalette contrast(Qt::black);
  contrast.setColor(QPalette::Highlight, QColor(0xffff00));
  contrast.setColor(QPalette::HighlightedText, Qt::black);
  const struct {
    QString name;
    QPalette palette;
    Qt::LayoutDirection direction;
  } looks[] = {{u"light"_s, desktopPalette(false), Qt::LeftToRight},
               {u"dark"_s, desktopPalette(true), Qt::LeftToRight},
               {u"mirrored"_s, desktopPalette(false), Qt::RightToLeft},
               {u"contrast"_s, contrast, Qt::LeftToRight}};
  for (const auto& look : looks) {
    QApplication::setPalette(look.palette);
    QApplication::setLayoutDirection(look.direction);
    window.reset();
    for (int page = 0; page < PreferencesWindow::pages; ++page) {
      open(static_cast<Page>(page));
      QCoreApplication::processEvents();
      savePicture(*window, u"%1-%2"_s.arg(window->currentPage()->accessibleName().remove(u' '), look.name));
    }
  }
  QApplication::setLayoutDirection(Qt::LeftToRight);
  QApplication::setPalette(QPalette());
}

}  // namespace
}  // namespace quillo
