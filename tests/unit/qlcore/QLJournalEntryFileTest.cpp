#include "JournalFixture.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QUuid>

#include <sys/stat.h>

#include <cmath>
#include <functional>
#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

using QLJournalEntryFileTest = JournalFixture;

static const QLLocation oslo{59.9139, 10.7522, u"Oslo, Norway"_s};
static const QLWeather rain{-3.5, u"rain"_s, u"Rain"_s, Date::since1970(1394485200), u"MET Norway"_s};

TEST_F(QLJournalEntryFileTest, ReadsBackAsItWasSaved) {
  const auto entry = QLJournalEntryFile::newEntry();
  EXPECT_EQ(entry->uuid(), QUuid::fromString(entry->uuid()).toString(QUuid::WithoutBraces).toUpper());
  EXPECT_NE(entry->uuid(), QLJournalEntryFile::newEntry()->uuid());
  EXPECT_FALSE(entry->fileURLForEntryProperties());
  entry->setString(u" a <b> & \"c\"\r\nd\te \U0001F600 ]]> "_s);
  entry->setTags({u"one"_s, u"zwei"_s});
  entry->setLocation(oslo);
  entry->setWeather(rain);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));

  EXPECT_EQ(entry->fileURLForEntryProperties(), QUrl::fromLocalFile(entryPath(entry->uuid())));
  EXPECT_TRUE(bytesOf(entryPath(entry->uuid())).startsWith("<?xml"));
  EXPECT_EQ(modeOf(entryPath(entry->uuid())), 0600);

  for (const auto& read : {reread(entry->uuid()), reread(entry->uuid().toLower()),
                           QLJournalEntryFile::load(*entry->fileURLForEntryProperties(), nullptr)}) {
    ASSERT_TRUE(read);
    EXPECT_EQ(read->uuid(), entry->uuid());
    EXPECT_EQ(read->string(), entry->string());
    EXPECT_EQ(read->tags(), entry->tags());
    EXPECT_EQ(read->location(), oslo);
    EXPECT_EQ(read->weather(), rain);
    EXPECT_EQ(read->creationDate(), entry->creationDate());
    EXPECT_EQ(read->modificationDate(), entry->modificationDate());
    EXPECT_EQ(read->timeZone(), entry->timeZone());
    EXPECT_EQ(read->fileURLForEntryProperties(), entry->fileURLForEntryProperties());
  }

  entry->setLocation({});
  entry->setWeather({});
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(reread(entry->uuid())->location());
  EXPECT_FALSE(reread(entry->uuid())->weather());
  EXPECT_EQ(everythingIn(package->entriesFolder()).size(), 1);
}

TEST_F(QLJournalEntryFileTest, ANewEntryCanBeOfAnotherTime) {
  const auto entry = QLJournalEntryFile::newEntry();
  const Date begun = entry->creationDate();
  for (const double seconds : {std::nan(""), 1e300, -1e12}) EXPECT_FALSE(entry->setCreationDate(Date(seconds)));
  EXPECT_EQ(entry->creationDate(), begun);
  ASSERT_TRUE(entry->setCreationDate(Date(1000.75)));
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_EQ(reread(entry->uuid())->creationDate(), Date(1000));
  EXPECT_GE(reread(entry->uuid())->modificationDate(), begun);
  EXPECT_FALSE(entry->setCreationDate(Date(1e300)));
}

TEST_F(QLJournalEntryFileTest, OfDetailsOnlyWhatWasChangedHereIsWritten) {
  const Date first(0), second(86400), third(172800);
  const QLLocation bergen{60.39, 5.32, u"Bergen"_s};
  struct Details {
    Date date;
    QString zone;
    QStringList tags;
    std::optional<QLLocation> place;
    std::optional<QLWeather> weather;
    bool operator==(const Details&) const = default;
  };
  const Details before{first, u"Europe/Oslo"_s, {u"one"_s}, oslo, rain};
  const Details moved{second, u"Asia/Tokyo"_s, {u"two"_s}, bergen, {}};
  const struct {
    const char* name;
    Details theirs, ours, expected;
  } cases[] = {
      {"ours alone", before, moved, moved},
      {"theirs alone", moved, before, moved},
      {"date here, place there",
       {first, u"Europe/Oslo"_s, {u"one"_s}, {}, {}},
       {second, u"Asia/Tokyo"_s, {u"one"_s}, oslo, rain},
       {second, u"Asia/Tokyo"_s, {u"one"_s}, {}, {}}},
      {"tags of both",
       {first, u"Europe/Oslo"_s, {u"one"_s, u"theirs"_s}, oslo, rain},
       {first, u"Europe/Oslo"_s, {u"ours"_s}, oslo, rain},
       {first, u"Europe/Oslo"_s, {u"theirs"_s, u"ours"_s}, oslo, rain}},
      {"the last one of both",
       {third, u"Europe/Rome"_s, {u"one"_s}, {}, rain},
       {second, u"Asia/Tokyo"_s, {u"one"_s}, bergen, rain},
       {second, u"Asia/Tokyo"_s, {u"one"_s}, bergen, rain}},
  };
  const auto set = [](QLJournalEntryFile& entry, const Details& details) {
    EXPECT_TRUE(entry.setCreationDate(details.date));
    entry.setTimeZone(details.zone);
    entry.setTags(details.tags);
    entry.setLocation(details.place);
    entry.setWeather(details.weather);
  };
  const auto detailsOf = [](const QLJournalEntryFile& entry) {
    return Details{entry.creationDate(), entry.timeZone(), entry.tags(), entry.location(), entry.weather()};
  };
  for (const auto& [name, theirs, ours, expected] : cases) {
    SCOPED_TRACE(name);
    const auto here = saved(u"text"_s);
    set(*here, before);
    ASSERT_TRUE(here->saveToJournal(package.get(), nullptr));
    const auto there = reread(here->uuid());
    set(*there, theirs);
    there->setString(u"their text"_s);
    ASSERT_TRUE(there->saveToJournal(package.get(), nullptr));
    set(*here, ours);
    ASSERT_TRUE(here->saveToJournal(package.get(), nullptr));
    EXPECT_EQ(detailsOf(*reread(here->uuid())), expected);
    EXPECT_EQ(detailsOf(*here), expected);
    EXPECT_EQ(reread(here->uuid())->string(), u"their text"_s);
  }
}

TEST_F(QLJournalEntryFileTest, KeepsWhatAnotherWriterAddedSinceItWasRead) {
  const auto entry = saved(u"mine"_s);
  entry->setLocation(oslo);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  const QString path = entryPath(entry->uuid());
  PropertyListDictionary fields = fieldsOf(path);
  PropertyListDictionary place = fields.value(u"location"_s).dictionary();
  place.insert(u"altitude"_s, 23);
  fields.insert(u"location"_s, place);
  write(path, fields);

  entry->setString(u"mine again"_s);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_EQ(fieldsOf(path).value(u"text"_s), PropertyListValue(u"mine again"_s));
  EXPECT_EQ(fieldsOf(path).value(u"location"_s).dictionary().value(u"altitude"_s), PropertyListValue(23));

  // The altitude of one place is not that of another.
  entry->setLocation(QLLocation{60.39, 5.32, u"Bergen"_s});
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(fieldsOf(path).value(u"location"_s).dictionary().contains(u"altitude"_s));
}

TEST_F(QLJournalEntryFileTest, AnEditLeavesOnDiskWhatItDoesNotTouch) {
  const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  const PropertyListDictionary place{{u"name"_s, u"Oslo"_s}, {u"geo"_s, PropertyListArray{59.9, 10.7}}};
  const PropertyListDictionary theirs{{u"text"_s, u"old"_s},
                                      {u"creationDate"_s, u"2014-03-10"_s},
                                      {u"tags"_s, PropertyListArray{u"one"_s, 7, place}},
                                      {u"location"_s, place},
                                      {u"weather"_s, PropertyListDictionary{{u"sky"_s, u"grey"_s}}},
                                      {u"timeZone"_s, 7},
                                      {u"starred"_s, true}};
  PropertyListDictionary undated = theirs;
  undated.remove(u"creationDate"_s);
  for (const auto& before : {theirs, undated}) {
    write(entryPath(uuid), before);
    const auto entry = reread(uuid);
    ASSERT_TRUE(entry);
    entry->setString(u"new"_s);
    entry->setTags(entry->tags());
    entry->setLocation({});
    ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
    PropertyListDictionary expected = before;
    expected.insert(u"text"_s, u"new"_s);
    expected.insert(u"modificationDate"_s, entry->modificationDate());
    EXPECT_EQ(fieldsOf(entryPath(uuid)), expected);
  }

  // New tags stand beside what is no tag; a text that others changed stays unless it is changed here.
  const auto entry = reread(uuid);
  PropertyListDictionary changed = fieldsOf(entryPath(uuid));
  changed.insert(u"text"_s, u"theirs"_s);
  write(entryPath(uuid), changed);
  entry->setTags({u"two"_s});
  entry->setLocation(oslo);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  const auto now = fieldsOf(entryPath(uuid));
  EXPECT_EQ(now.value(u"text"_s), PropertyListValue(u"theirs"_s));
  EXPECT_EQ(now.value(u"tags"_s), PropertyListValue(PropertyListArray{u"two"_s, 7, place}));
  EXPECT_EQ(reread(uuid)->location(), oslo);
}

TEST_F(QLJournalEntryFileTest, MergesWhatTwoWritersChanged) {
  const auto ours = saved(u"The river was cold."_s);
  ours->setTags({u"one"_s, u"two"_s});
  ASSERT_TRUE(ours->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(ours->lastMerge());
  const auto theirs = reread(ours->uuid());
  theirs->setString(u"The old river was cold."_s);
  theirs->setTags({u"two"_s, u"three"_s});
  ASSERT_TRUE(theirs->saveToJournal(package.get(), nullptr));

  ours->setString(u"The river was cold today."_s);
  ours->setTags({u"one"_s, u"two"_s, u"Three"_s, u"four"_s});
  ASSERT_TRUE(ours->saveToJournal(package.get(), nullptr));
  ASSERT_TRUE(ours->lastMerge());
  const auto merge = ours->lastMerge().value_or(QLJournalEntryFile::Merge());
  EXPECT_FALSE(merge.hasClash);
  EXPECT_EQ(merge.theirs, u"The old river was cold."_s);
  EXPECT_EQ(merge.ours, u"The river was cold today."_s);
  EXPECT_EQ(ours->string(), u"The old river was cold today."_s);
  EXPECT_EQ(reread(ours->uuid())->string(), ours->string());
  EXPECT_EQ(reread(ours->uuid())->tags(), (QStringList{u"two"_s, u"three"_s, u"four"_s}));

  // A text that was not touched here is not put back.
  theirs->setString(u"Another text."_s);
  ASSERT_TRUE(theirs->saveToJournal(package.get(), nullptr));
  EXPECT_TRUE(theirs->lastMerge().value_or(QLJournalEntryFile::Merge()).hasClash);
  ours->setLocation(oslo);
  ASSERT_TRUE(ours->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(ours->lastMerge());
  EXPECT_EQ(reread(ours->uuid())->string(), u"The old river was cold today.\nAnother text."_s);
}

TEST_F(QLJournalEntryFileTest, SavesAlthoughXMLCannotHoldAnUnknownKey) {
  const auto entry = saved(u"text"_s);
  const QString path = entryPath(entry->uuid());
  PropertyListDictionary fields = fieldsOf(path);
  const PropertyListValue odd = QString(QChar(1));
  fields.insert(u"odd"_s, odd);
  write(path, fields, PropertyListFormat::Binary);
  entry->setString(u"new"_s);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_EQ(fieldsOf(path).value(u"odd"_s), odd);
  EXPECT_EQ(reread(entry->uuid())->string(), u"new"_s);
}

TEST_F(QLJournalEntryFileTest, TextThatAFileCannotHoldNeverFailsTheSave) {
  const QChar high(0xD83D), low(0xDE00), bad = QChar::ReplacementCharacter;
  const struct {
    QString text;
    QString stored;
  } cases[] = {{u"a"_s + QChar(0) + u"b"_s, u"a"_s + bad + u"b"_s},
               {u"\x1b[1m\x07\t\n\r"_s, bad + u"[1m"_s + bad + u"\t\n\r"_s},
               {u"\uFFFE\uFFFF\uFFFD"_s, QString(3, bad)},
               {QString(high) + u"x"_s + low, QString(bad) + u"x"_s + bad},
               {QString(high) + low + high, QString(high) + low + bad}};
  for (const auto& [text, stored] : cases) {
    const auto entry = saved(text, {text, QString()});
    entry->setLocation(QLLocation{1, 2, text});
    entry->setWeather(QLWeather{1, text, text, Date(std::numeric_limits<double>::quiet_NaN()), text});
    Error error;
    ASSERT_TRUE(entry->saveToJournal(package.get(), &error)) << error.description().toStdString();
    const auto read = reread(entry->uuid());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->string(), stored);
    EXPECT_EQ(entry->string(), stored);
    EXPECT_EQ(read->tags(), QStringList{stored});
    EXPECT_EQ(read->location(), (QLLocation{1, 2, stored}));
    EXPECT_EQ(read->weather(), (QLWeather{1, stored, stored, {}, stored}));
  }
}

TEST_F(QLJournalEntryFileTest, HostileValuesReadAsAbsentAndCanBeSavedAgain) {
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const auto place = [](const PropertyListValue& latitude, const PropertyListValue& longitude) {
    return PropertyListDictionary{{u"latitude"_s, latitude}, {u"longitude"_s, longitude}};
  };
  const PropertyListValue places[] = {place(notANumber, 1),     place(90.5, 1), place(u"1"_s, u"2"_s),
                                      PropertyListDictionary(), u"Oslo"_s,      place(~quint64{0}, qint64{1})};
  const PropertyListValue temperatures[] = {notANumber, 1e9, -273.2, u"warm"_s, PropertyListArray()};
  const Date dates[] = {Date(notANumber), Date(1e300), Date(-1e300), Date(std::numeric_limits<double>::infinity())};
  const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  // The lists are walked side by side; the longest decides.
  for (size_t i = 0; i < std::size(places); ++i) {
    const Date date = dates[i % std::size(dates)];
    write(entryPath(uuid),
          {{u"text"_s, u"t"_s + QChar(1)},
           {u"creationDate"_s, date},
           {u"modificationDate"_s, date},
           {u"timeZone"_s, 7},
           {u"tags"_s, PropertyListArray{1, u"x"_s, PropertyListArray(), u"y"_s + QChar(0)}},
           {u"location"_s, places[i]},
           {u"weather"_s,
            PropertyListDictionary{{u"temperature"_s, temperatures[i % std::size(temperatures)]}, {u"date"_s, date}}}},
          PropertyListFormat::Binary);
    const auto entry = reread(uuid);
    ASSERT_TRUE(entry);
    EXPECT_FALSE(entry->location()) << places[i].description().toStdString();
    EXPECT_FALSE(entry->weather());
    EXPECT_EQ(entry->creationDate(), Date());
    EXPECT_EQ(entry->tags(), (QStringList{u"x"_s, u"y\uFFFD"_s}));
    Error error;
    EXPECT_TRUE(entry->saveToJournal(package.get(), &error)) << error.description().toStdString();
    EXPECT_TRUE(reread(uuid));
  }
  const auto entry = saved(u"placed"_s);
  entry->setLocation(oslo);
  entry->setWeather(rain);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  entry->setLocation(QLLocation{notANumber, 0, {}});
  entry->setWeather(QLWeather{notANumber, {}, {}, {}, {}});
  EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_FALSE(fieldsOf(entryPath(entry->uuid())).contains(u"location"_s));
  EXPECT_FALSE(fieldsOf(entryPath(entry->uuid())).contains(u"weather"_s));
}

TEST_F(QLJournalEntryFileTest, IdentifiersFromOutsideAreCheckedBeforeTheyBecomePaths) {
  const QString good = saved(u"x"_s)->uuid();
  const QString hostile[] = {u""_s,
                             u"../Journal"_s,
                             u'{' + good + u'}',
                             good + u"/../"_s + good,
                             good.chopped(1),
                             good + QChar(0),
                             u"00000000-0000-0000-0000-000000000000"_s,
                             QString(100'000, u'A')};
  for (const QString& uuid : hostile) {
    Error error;
    EXPECT_FALSE(reread(uuid, &error)) << uuid.left(60).toStdString();
    EXPECT_EQ(error.code, JournalError::EntryNotFound);
    EXPECT_LT(error.localizedDescription.size(), 300);
  }
  for (const QString& url : {package->url().toString() + u"/Journal.plist"_s, u"https://quilloapp.example/"_s + good,
                             QUrl::fromLocalFile(package->entriesFolder()).toString(), u""_s})
    EXPECT_FALSE(QLJournalEntryFile::load(QUrl(url), nullptr)) << url.toStdString();
}

TEST_F(QLJournalEntryFileTest, DamagedOnesAreRefusedWithTheReasonAndReplacedByASave) {
  const auto entry = saved(u"whole"_s);
  const QString path = entryPath(entry->uuid());
  const QByteArray whole = bytesOf(path);
  const QByteArray contents[] = {"", "garbage", whole.first(whole.size() / 2),
                                 "<plist><dict><key>text</key><integer>1</integer></dict></plist>"};
  for (const QByteArray& content : contents) {
    write(path, content);
    Error error;
    EXPECT_FALSE(reread(entry->uuid(), &error)) << content.toStdString();
    EXPECT_EQ(error.code, JournalError::EntryDamaged) << error.description().toStdString();
    EXPECT_TRUE(error.localizedDescription.contains(path));
    EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));
    EXPECT_EQ(reread(entry->uuid())->string(), u"whole"_s);
  }
}

TEST_F(QLJournalEntryFileTest, LinksAndOddFilesAreNeitherReadNorReplaced) {
  const auto entry = saved(u"mine"_s);
  const QString path = entryPath(entry->uuid());
  const QString outside = home.path(u"outside.plist"_s);
  const QByteArray content = bytesOf(path);
  const struct {
    const char* name;
    std::function<bool()> make;
  } cases[] = {{"link", [&] { return QFile::link(outside, path); }},
               {"dangling link", [&] { return QFile::link(home.path(u"nowhere"_s), path); }},
               {"folder", [&] { return QDir().mkdir(path); }},
               {"pipe", [&] { return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0; }}};
  for (const auto& [name, make] : cases) {
    SCOPED_TRACE(name);
    QDir().rmdir(path);
    QFile::remove(path);
    write(outside, content);
    ASSERT_TRUE(make());
    Error error;
    EXPECT_FALSE(reread(entry->uuid(), &error));
    EXPECT_EQ(error.code, JournalError::NotReadable) << error.description().toStdString();
    EXPECT_FALSE(entry->saveToJournal(package.get(), &error));
    EXPECT_TRUE(error.localizedDescription.contains(path)) << error.description().toStdString();
    EXPECT_EQ(bytesOf(outside), content);
    EXPECT_FALSE(QFile::exists(home.path(u"nowhere"_s)));
    EXPECT_EQ(everythingIn(package->entriesFolder()).size(), 1);
  }

  // The whole folder of entries as a link.
  ASSERT_TRUE(QDir(package->entriesFolder()).removeRecursively());
  QDir().mkdir(home.path(u"elsewhere"_s));
  ASSERT_TRUE(QFile::link(home.path(u"elsewhere"_s), package->entriesFolder()));
  write(home.path(u"elsewhere/"_s) + entry->uuid() + u".plist"_s, content);
  Error error;
  EXPECT_FALSE(reread(entry->uuid(), &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"symbolic link"_s)) << error.description().toStdString();
  EXPECT_FALSE(entry->saveToJournal(package.get(), &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"symbolic link"_s)) << error.description().toStdString();
  EXPECT_EQ(everythingIn(home.path(u"elsewhere"_s)).size(), 1);
}

TEST_F(QLJournalEntryFileTest, SavingNeedsAJournalButNotItsEmptyFolder) {
  const auto entry = QLJournalEntryFile::newEntry();
  QList<Error> attachmentErrors{Error()};
  Error error;
  EXPECT_FALSE(entry->saveToJournal(nullptr, &error, &attachmentErrors));
  EXPECT_EQ(error.code, JournalError::JournalFileNotFound);
  EXPECT_TRUE(attachmentErrors.isEmpty());

  ASSERT_TRUE(QDir().rmdir(package->entriesFolder()));
  EXPECT_FALSE(reread(entry->uuid(), &error));
  EXPECT_EQ(error.code, JournalError::EntryNotFound);
  EXPECT_TRUE(entry->saveToJournal(package.get(), &error)) << error.description().toStdString();
  EXPECT_TRUE(reread(entry->uuid()));

  // A journal that is gone is not made anew around an entry.
  const QString path = package->url().toLocalFile();
  ASSERT_TRUE(QDir(path).removeRecursively());
  EXPECT_FALSE(entry->saveToJournal(package.get(), &error));
  EXPECT_TRUE(error.localizedDescription.contains(path)) << error.description().toStdString();
  EXPECT_FALSE(QFile::exists(path));
}

}  // namespace quillo
