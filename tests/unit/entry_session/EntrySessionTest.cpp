// The entry being written, without a window: session, draft and place.

#include "entry/session/EntryPlace.h"
#include "entry/session/EntrySession.h"
#include "entry/session/EntryText.h"
#include "tests/support/EntryFixture.h"
#include "tests/support/EventLoop.h"

namespace quillo {
namespace {

const QString berlinAndMild = u"Berlin, Germany  \u2022  18 °C Partly cloudy"_s;

struct PlainText : EntryText {
  [[nodiscard]] QString text() const override { return content; }
  void setText(const QString& text) override { content = text; }
  void commitComposition() override {}
  QString content;
};

class EntrySessionTest : public EntryTest {
 protected:
  // An editor without a window.
  struct Editor {
    explicit Editor(EntrySessionTest& test)
        : place({.config = test.config, .makeLocationManager = test.makeLocationManager(), .weather = &test.weather}),
          session({.config = test.config,
                   .draft = *test.draft,
                   .usageTracker = &QLMixpanelTracker::sharedInstance,
                   .journalFile = &QLJournalPackageFile::defaultPackage,
                   .emptyJournalEntry = &QLJournalEntryFile::emptyJournalEntry},
                  text, place) {}
    void type(const QString& more) {
      text.content += more;
      session.textDidChange();
    }
    bool save() { return session.save(/*force=*/false, nullptr); }
    PlainText text;
    EntryPlace place;
    EntrySession session;
  };

  EntrySessionTest() { newEditor(); }
  void newEditor() { editor = std::make_shared<Editor>(*this); }
  // The process before has died: the next one has what is on disk.
  void startAnew() {
    editor.reset();
    draft = std::make_unique<EntryDraft>(draftPath);
    newEditor();
    editor->session.restoreDraft();
  }
  // As the next editor does for the one before.
  std::shared_ptr<Editor> replaceEditor() {
    auto before = editor;
    newEditor();
    editor->session.takeOverUnsavedText(before->session);
    return before;
  }
  void bePlaced() {
    editor->place.setLocation(berlin());
    editor->place.setWeather(mildWeather());
  }
  static void makeOlder(const QString& path, int seconds) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds), QFileDevice::FileModificationTime);
  }
  void write(const QString& more) {
    editor->type(more);
    EXPECT_TRUE(editor->save());
  }
  void finish(const QString& more) {
    write(more);
    editor->session.finish({});
  }
  // Sorted.
  QStringList texts() {
    QStringList texts;
    for (const auto& entry : entries()) texts << entry->string();
    texts.sort();
    return texts;
  }

  std::shared_ptr<Editor> editor;
};

TEST_F(EntrySessionTest, AnEmptiedEntryIsDeletedAndTheNextTextIsANewOne) {
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), QStringList());
  write(u"soon gone"_s);
  EXPECT_EQ(texts(), QStringList{u"soon gone"_s});
  const QString first = editor->session.activeEntry()->uuid();
  editor->text.content.clear();
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), QStringList());
  EXPECT_EQ(editor->session.activeEntry(), nullptr);
  write(u"next"_s);
  EXPECT_NE(editor->session.activeEntry()->uuid(), first);
}

TEST_F(EntrySessionTest, OnlyTheValueTwoKeepsHashtagsOutOfTheTags) {
  const struct {
    std::optional<PropertyListValue> setting;
    QStringList tags;
  } cases[] = {{std::nullopt, {u"a"_s}}, {0, {u"a"_s}}, {1, {u"a"_s}}, {2, {}}, {u"2"_s, {}}, {3, {u"a"_s}}};
  for (const auto& c : cases) {
    config.groupProperties()->setValueForKey(c.setting, Key::shouldAddHashtags);
    write(u"x #a"_s);
    EXPECT_EQ(editor->session.activeEntry()->tags(), c.tags);
    editor->session.finish({});
  }
}

TEST_F(EntrySessionTest, WhatAnotherProgramChangedComesIntoTheText) {
  write(u"The river was cold."_s);
  const auto theirs = entries().first();
  theirs->setString(u"The old river was cold."_s);
  ASSERT_TRUE(theirs->saveToJournal(nullptr, nullptr));
  write(u" Home late."_s);
  EXPECT_EQ(editor->text.content, u"The old river was cold. Home late."_s);
  EXPECT_EQ(texts(), QStringList{editor->text.content});
}

// On another machine, whose deletion came while it was being edited here.
TEST_F(EntrySessionTest, AnEditWinsOverADeletionAndSaysSo) {
  write(u"Kept"_s);
  EXPECT_FALSE(editor->session.hasBroughtEntryBack());
  const QString uuid = editor->session.activeEntry()->uuid();
  ASSERT_TRUE(QFile::remove(editor->session.activeEntry()->fileURLForEntryProperties()->toLocalFile()));
  editor->type(u" after all."_s);
  EXPECT_TRUE(editor->save());
  EXPECT_TRUE(editor->session.hasBroughtEntryBack());
  EXPECT_EQ(texts(), QStringList{u"Kept after all."_s});
  EXPECT_EQ(entries().first()->uuid(), uuid);
  write(u" Again."_s);
  EXPECT_FALSE(editor->session.hasBroughtEntryBack());
}

// A journal whose own file comes later than its entries keeps what is written meanwhile as a draft.
TEST_F(EntrySessionTest, AJournalThatHasOnlyPartlyArrivedIsWaitedFor) {
  write(u"Here first."_s);
  const QString properties = journalURL.toLocalFile() + u"/Journal.plist"_s;
  ASSERT_TRUE(QFile::rename(properties, home.path(u"later"_s)));
  editor->type(u" And more."_s);
  EXPECT_FALSE(editor->save());
  EXPECT_TRUE(QFile::exists(draftPath));
  ASSERT_TRUE(QFile::rename(home.path(u"later"_s), properties));
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), QStringList{u"Here first. And more."_s});
  EXPECT_FALSE(QFile::exists(draftPath));
}

TEST_F(EntrySessionTest, UnsavedTextIsInADraftUntilItIsSaved) {
  // Typing on does not put it off.
  EXPECT_TRUE(runUntil([this] {
    editor->type(u"not saved yet. "_s);
    return QFile::exists(draftPath);
  }));
  EXPECT_EQ(modeOf(draftPath), 0600);

  // The next process offers the text, as an entry of its own.
  startAnew();
  EXPECT_TRUE(editor->text.content.startsWith(u"not saved yet"_s));
  EXPECT_TRUE(editor->save());
  EXPECT_FALSE(QFile::exists(draftPath));
  EXPECT_EQ(texts(), QStringList{editor->text.content});

  // The same with later text of an entry that is in the journal already: it goes on with that entry, place and weather.
  bePlaced();
  EXPECT_TRUE(editor->save());
  editor->type(u" and more"_s);
  EXPECT_TRUE(runUntil([this] { return QFile::exists(draftPath); }));
  startAnew();
  EXPECT_EQ(editor->place.metadataText(), berlinAndMild);
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), QStringList{editor->text.content});

  // What became of the entry since is not overwritten.
  const QString before = editor->text.content;
  draft->write({u"later"_s, editor->session.activeEntry()->uuid(), {}});
  makeOlder(draftPath, 60);
  startAnew();
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), (QStringList{u"later"_s, before}));

  // Nor is a draft lost that cannot be saved.
  breakJournal();
  EXPECT_FALSE(editor->save());
  startAnew();
  EXPECT_EQ(editor->text.content, u"later"_s);
}

TEST_F(EntrySessionTest, UnsavedTextMovesToTheNextEditorAndItsJournal) {
  editor->type(u"homeless"_s);
  bePlaced();
  breakJournal();
  EXPECT_FALSE(editor->save());
  useJournal(u"Other.quillojournal"_s);
  const auto before = replaceEditor();
  EXPECT_EQ(before->text.content, QString());
  EXPECT_EQ(editor->place.metadataText(), berlinAndMild);
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(texts(), QStringList{u"homeless"_s});

  // What the one before does then is no reason to give up the draft.
  breakJournal();
  editor->type(u"!"_s);
  const auto waiting = replaceEditor();
  EXPECT_FALSE(editor->save());
  EXPECT_TRUE(waiting->save());
  EXPECT_EQ(EntryDraft(draftPath).takeLeftBehind().value_or(EntryDraft::Content()).text, u"homeless!"_s);
  ASSERT_TRUE(QDir(journalURL.toLocalFile()).removeRecursively());
  useJournal(u"Other.quillojournal"_s);
  EXPECT_TRUE(editor->save());

  // Text that is safe in the journal stays behind.
  replaceEditor();
  EXPECT_EQ(editor->text.content, QString());
}

TEST_F(EntrySessionTest, DetailsGoWithTheFirstSaveAndWithEachLaterOne) {
  const auto change = [this](auto act) {
    EntryDetails details = editor->session.details();
    act(details);
    return editor->session.setDetails(details, nullptr);
  };
  const Date then = Date::since1970(1394485200);
  EXPECT_TRUE(change([&](EntryDetails& details) {
    details.creationDate = then;
    details.tags = {u"hand"_s};
  }));
  EXPECT_EQ(texts(), QStringList());
  write(u"A day ago #walk"_s);
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries().first()->creationDate(), then);
  EXPECT_EQ(entries().first()->tags(), (QStringList{u"hand"_s, u"walk"_s}));

  // Taken out by hand, it does not come back with the next word.
  EXPECT_TRUE(change([](EntryDetails& details) { details.tags.removeAll(u"walk"_s); }));
  const auto theirs = entries().first();
  EXPECT_EQ(theirs->tags(), QStringList{u"hand"_s});
  theirs->setLocation(*berlin());
  theirs->setTags({u"hand"_s, u"theirs"_s});
  ASSERT_TRUE(theirs->saveToJournal(nullptr, nullptr));
  write(u" and home"_s);
  EXPECT_TRUE(change([](EntryDetails& details) { details.timeZone = u"Asia/Tokyo"_s; }));
  EXPECT_EQ(entries().first()->tags(), (QStringList{u"hand"_s, u"theirs"_s}));
  EXPECT_EQ(entries().first()->location(), *berlin());
  EXPECT_EQ(entries().first()->timeZone(), u"Asia/Tokyo"_s);
  EXPECT_EQ(editor->session.details().location, *berlin());

  // What cannot be saved is saved the next time.
  const QString entriesFolder = journalURL.toLocalFile() + u"/Entries"_s;
  ASSERT_TRUE(QFile::rename(entriesFolder, entriesFolder + u".away"_s));
  QFile inTheWay(entriesFolder);
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  EXPECT_FALSE(change([](EntryDetails& details) { details.location.reset(); }));
  EXPECT_TRUE(editor->session.isUnsaved());
  ASSERT_TRUE(inTheWay.remove());
  ASSERT_TRUE(QFile::rename(entriesFolder + u".away"_s, entriesFolder));
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(entries().first()->location(), std::nullopt);
}

TEST_F(EntrySessionTest, TheDetailsOfAnEntryOutliveACrashBeforeItsFirstSave) {
  bePlaced();
  EntryDetails details = editor->session.details();
  details.creationDate = Date::since1970(1394485200);
  details.timeZone = u"Asia/Tokyo"_s;
  details.tags = {u"hand"_s};
  ASSERT_TRUE(details.location && details.weather);
  EXPECT_TRUE(editor->session.setDetails(details, nullptr));
  editor->type(u"not saved yet"_s);
  EXPECT_TRUE(runUntil([this] { return QFile::exists(draftPath); }));
  startAnew();
  EXPECT_TRUE(editor->save());
  EXPECT_EQ(editor->session.details(), details);
  const auto saved = entries().first();
  EXPECT_EQ(saved->creationDate(), details.creationDate);
  EXPECT_EQ(saved->timeZone(), details.timeZone);
  EXPECT_EQ(saved->tags(), details.tags);
  EXPECT_EQ(saved->location(), details.location);
  EXPECT_EQ(saved->weather(), details.weather);
}

using EntryPlaceTest = EntrySessionTest;

TEST_F(EntryPlaceTest, ImprovingFixesAskForTheWeatherOnceAndTheLastWordIsToldOf) {
  EntryPlace& place = editor->place;
  place.setIsWanted(true);
  place.fetchLocationAndWeatherIfNeeded();
  EXPECT_EQ(location->timeout, 15.0);
  location->find(berlin(), 1200, false);
  EXPECT_TRUE(weather.asked.empty());
  location->find(berlin(), 800, false);
  ASSERT_EQ(weather.asked.size(), 1U);
  EXPECT_EQ(weather.asked[0], std::pair(52.52, 13.405));
  location->find(berlin(), 20, false);
  location->find(berlin(), 10, true);
  EXPECT_EQ(weather.asked.size(), 1U);
  weather.fail(Error());
  EXPECT_EQ(place.metadataText(), u"Berlin, Germany"_s);

  place.fetchLocationAndWeatherIfNeeded();
  location->find(berlin(), 5000, true);
  EXPECT_EQ(weather.asked.size(), 2U);
  weather.succeed(mildWeather());
  EXPECT_EQ(place.metadataText(), berlinAndMild);

  // The place that is there is not told of anew, the same weather is.
  QStringList told;
  QObject::connect(&place, &EntryPlace::metadataDidChange, [&] { told << place.metadataText(); });
  place.setLocation(place.location());
  config.groupProperties()->setBoolForKey(true, Key::useFahrenheitTempScale);
  place.setWeather(mildWeather());
  place.setLocation(nullptr);
  EXPECT_EQ(told, (QStringList{u"Berlin, Germany  \u2022  65 °F Partly cloudy"_s, u"65 °F Partly cloudy"_s}));
  // An answer that comes when nobody is there.
  editor.reset();
  weather.succeed(mildWeather());
}

using EntryDraftTest = EntrySessionTest;

TEST_F(EntryDraftTest, OneAmongTheCachesIsFoundOnceAndNoneIsLost) {
  const QString here = home.path(u"state/UnsavedEntry.plist"_s);
  const struct {
    QStringList written;  // the older first
    QStringList answered;
  } cases[] = {{{}, {}},
               {{draftPath}, {u"0"_s}},
               {{here}, {u"0"_s}},
               {{here, draftPath}, {u"1"_s, u"0"_s}},
               {{draftPath, here}, {u"1"_s, u"0"_s}}};
  for (const auto& c : cases) {
    for (int i = 0; i < c.written.size(); ++i) {
      EntryDraft(c.written[i]).write({QString::number(i), {}, {}});
      makeOlder(c.written[i], 10 - i);
    }
    // One process after another, each of which saves what it finds.
    QStringList answered;
    for (int process = 0; process < 3; ++process) {
      EntryDraft next(here, draftPath);
      const bool isLeft = next.isLeftBehind();
      const auto left = next.takeLeftBehind();
      EXPECT_EQ(isLeft, left.has_value());
      if (left) answered << left->text;
      EXPECT_FALSE(QFile::exists(draftPath));
      next.remove();
    }
    EXPECT_EQ(answered, c.answered);
  }
  // One that nobody has asked for is not overwritten.
  for (const auto& text : {u"first"_s, u"second"_s}) EntryDraft(here).write({text, {}, {}});
  for (const auto& text : {u"second"_s, u"first"_s}) {
    EntryDraft next(here);
    EXPECT_EQ(next.takeLeftBehind().value_or(EntryDraft::Content()).text, text);
    next.remove();
  }
  // Nor is one removed that another wrote, or one that cannot be read.
  EntryDraft(here).write({u"x"_s, {}, {}});
  EntryDraft(here).remove();
  EXPECT_TRUE(QFile::resize(here, 9));
  EXPECT_FALSE(EntryDraft(here).takeLeftBehind());
  EXPECT_TRUE(QFile::exists(here + u".damaged"_s));
  EXPECT_EQ(EntryDraft::defaultPath(), home.path(u".local/state/quillo/UnsavedEntry.plist"_s));
}

}  // namespace
}  // namespace quillo
