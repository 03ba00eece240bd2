#pragma once

#include "entry/spelling/SpellChecker.h"
#include "entry/text/EntryViewTextView.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "journal/JournalWindow.h"
#include "journal/model/IndexedJournalReader.h"
#include "journal/printing/PdfEntryWriter.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/SearchField.h"
#include "journal/views/StatusRow.h"
#include "journal/views/TimelineView.h"
#include "platform/Registration.h"
#include "tests/support/EntryFixture.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakePanels.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace quillo {

// Saves what the widget shows below $QUILLO_PICTURES, light and dark, for people to look at.
inline void savePicture(QWidget& of, const QString& name) {
  const QString folder = qEnvironmentVariable("QUILLO_PICTURES");
  if (folder.isEmpty()) return;
  // What has just changed is laid out and drawn in turns of the event loop.
  const QPalette usual = QApplication::palette();
  for (const bool isDark : {false, true}) {
    if (isDark) QApplication::setPalette(QPalette(QColor(0x30, 0x33, 0x38)));
    for (int turn = 0; turn < 2; ++turn) QCoreApplication::processEvents();
    of.grab().save(folder + u'/' + name + (isDark ? u"-dark.png"_s : u".png"_s));
  }
  QApplication::setPalette(usual);
}

// The journal's window on a real journal and its index.
class JournalWindowTest : public EntryTest {
 protected:
  JournalWindowTest() {
    package = QLJournalPackageFile::openPackage(journalURL, /*create=*/false, nullptr);
    library.reopen();
  }

  // Written by another program.
  QString write(const QString& text, int daysAgo = 0, const QStringList& tags = {}) {
    const auto entry = QLJournalEntryFile::newEntry();
    entry->setString(text);
    entry->setTags(tags);
    entry->setCreationDate(Date::since1970(Date::now().timeIntervalSince1970() - daysAgo * 86400.0));
    EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));
    return entry->uuid();
  }
  QString textOnDisk(const QString& identifier) {
    const auto entry = QLJournalEntryFile::entryWithUUID(*package, identifier, nullptr);
    return entry ? entry->string() : u"(none)"_s;
  }

  JournalWindow& open() {
    window = std::make_unique<JournalWindow>(JournalWindowServices{
        .library = library,
        .editor = {.session = {.config = config,
                               .draft = *draft,
                               .usageTracker = &QLMixpanelTracker::sharedInstance,
                               .journalFile = [this] { return library.package(); },
                               .emptyJournalEntry = [] { return QLJournalEntryFile::newEntry(); },
                               .tags =
                                   [this](auto answer) {
                                     QTimer::singleShot(0, window.get(), [this, answer] { answer(tagsInUse); });
                                     return std::make_unique<Registration>([] {});
                                   },
                               .deletesEmptiedEntries = false},
                   .place = {.config = config, .makeLocationManager = makeLocationManager(), .weather = &weather},
                   .text = {.defaults = defaults, .localCenter = center, .spellChecker = speller}},
        .defaults = defaults,
        .weatherText = [](const QLWeather&) { return u"mild"_s; },
        .fontSize = [this] { return fontSize; },
        .setFontSize = [this](int points) { fontSize = points; },
        .setUp = [] {},
        .createJournal = [] {},
        .chooseJournal = [](QWidget&) {},
        .showFolder = [](const QString&) {},
        .openURL = [](const QUrl&) {},
        .showAbout = [] {},
        .exchange = {.openPanel = panel,
                     .pdf = []() -> DocumentMaker {
                       return [](ByteSink sink) {
                         return std::make_unique<PdfEntryWriter>(
                             std::move(sink), PdfEntryWriter::Options{.locale = QLocale(),
                                                                      .weatherText = [](auto&) { return QString(); }});
                       };
                     },
                     .makesTagsOfHashtags = [] { return true; },
                     .showFile = [this](const QString& path, const std::function<void()>&) { shownFiles << path; }}});
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    return *window;
  }
  void waitForRows(int count) {
    EXPECT_TRUE(runUntil([&] { return list().rows().rowCount() == count; })) << list().rows().rowCount();
  }
  void waitForText(const QString& text) {
    EXPECT_TRUE(runUntil([&] { return editor().text() == text; })) << editor().text().toStdString();
  }
  TimelineView& list() { return *window->view().list; }
  EditorPane& editor() { return *window->view().editor; }
  EntryViewTextView& textView() { return editor().textView(); }
  NoticeBar& notices() { return window->view().status->notices(); }

  std::shared_ptr<QLJournalPackageFile> package;
  NotificationCenter center;
  SpellChecker speller{{}};
  FakeOpenPanel panel;
  QStringList shownFiles;
  int fontSize{16};
  QStringList tagsInUse;
  JournalLibrary library{{.location = [this] { return config.configuredJournalFileURL(); },
                          .makeReader = [](const QLJournalPackageFile& of) -> std::unique_ptr<JournalReader> {
                            return std::make_unique<IndexedJournalReader>(of);
                          }}};
  std::unique_ptr<JournalWindow> window;
};

}  // namespace quillo
