#include "ExchangeFixture.h"
#include "exchange/TypedJson.h"
#include "qlcore/StorableValues.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <limits>
#include <random>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// Entries at random, of all that a file may hold.
class RandomEntries {
 public:
  PropertyListDictionary next(bool isStrange) {
    PropertyListDictionary fields{{EntryFields::text, text(m_random() % 300)},
                                  {EntryFields::creationDate, date(isStrange)},
                                  {EntryFields::timeZone, one(zones)}};
    if (chance(8)) fields.insert(EntryFields::modificationDate, date(isStrange));
    if (chance(5))
      fields.insert(EntryFields::tags, PropertyListArray{u"#"_s + text(m_random() % 9), u"b c"_s, u"true"_s});
    if (chance(5)) fields.insert(EntryFields::location, location().toPropertyList());
    if (chance(5)) fields.insert(EntryFields::weather, weather().toPropertyList());
    if (isStrange) addStrange(fields);
    return fields;
  }

 private:
  static inline const QStringList zones{u"Europe/Berlin"_s, u"Asia/Kathmandu"_s, u"America/St_Johns"_s, u"Etc/UTC"_s,
                                        u"Pacific/Apia"_s};
  static inline const QStringList pieces{u"word "_s,
                                         u"\n"_s,
                                         u"\n\n"_s,
                                         u"---\n"_s,
                                         u"😀"_s,
                                         u"👩‍👩‍👧 "_s,
                                         u"שלום "_s,
                                         u"العربية"_s,
                                         u"\u202E"_s,
                                         u"\t"_s,
                                         u"\r\n"_s,
                                         u"\r"_s,
                                         u"\"\\'"_s,
                                         u"<b>&amp;"_s,
                                         u"# h\n"_s,
                                         u": - ["_s,
                                         u"\u0085\u00A0\u2028"_s,
                                         u"\uFEFF"_s,
                                         u"e\u0301"_s,
                                         u"𝔘"_s,
                                         u"$"_s,
                                         u"null"_s};

  bool chance(unsigned ofTen) { return m_random() % 10 < ofTen; }
  QString one(const QStringList& list) {
    return list[static_cast<qsizetype>(m_random() % static_cast<size_t>(list.size()))];
  }
  QString text(size_t length) {
    QString text;
    for (size_t i = 0; i < length; ++i) text += one(pieces);
    return text;
  }
  Date date(bool isStrange) {
    constexpr double yearOne = -62135596800;
    constexpr double last = 253402300799;
    const double any = std::floor(std::uniform_real_distribution(yearOne, last)(m_random));
    const double recent = std::floor(std::uniform_real_distribution(0.0, 1.8e9)(m_random));
    if (isStrange && chance(2)) return Date(std::uniform_real_distribution(-1e12, 1e12)(m_random));
    return Date::since1970(chance(1) ? yearOne : chance(1) ? last : chance(3) ? any : recent);
  }
  QLLocation location() {
    return {std::uniform_real_distribution(-90.0, 90.0)(m_random),
            chance(5) ? 180.0 : std::uniform_real_distribution(-180.0, 180.0)(m_random),
            chance(5) ? u"p"_s + text(4) : QString()};
  }
  QLWeather weather() {
    return {chance(5) ? -3.0 : std::uniform_real_distribution(-60.0, 60.0)(m_random), one({u""_s, u"fog"_s}),
            text(m_random() % 3), chance(5) ? std::optional(date(false)) : std::nullopt, one({u""_s, u"Somebody"_s})};
  }
  void addStrange(PropertyListDictionary& fields) {
    const PropertyListDictionary marked{{u"$date"_s, u"no date"_s}};
    const PropertyListArray values{
        true,
        qint64{-7},
        std::numeric_limits<qint64>::min(),
        std::numeric_limits<quint64>::max(),
        1.0,
        0.1,
        -0.0,
        std::numeric_limits<double>::infinity(),
        1e300,
        Date(0.1),
        Date(1e300),
        QByteArray("\0\1\xff", 3),
        QString(u'\x01'),
        PropertyListArray(),
        marked,
        PropertyListDictionary{{u"$data"_s, marked}, {u"b"_s, PropertyListArray{marked, QByteArray()}}}};
    for (const auto& key : {u"mood"_s, u"com.other.key"_s, u"otherFields"_s, u""_s})
      if (chance(5))
        fields.insert(key, values[static_cast<qsizetype>(m_random() % static_cast<size_t>(values.size()))]);
    for (const auto& key : {EntryFields::uuid, EntryFields::tags, EntryFields::location, EntryFields::timeZone,
                            EntryFields::creationDate})
      if (chance(1))
        fields.insert(key, values[static_cast<qsizetype>(m_random() % static_cast<size_t>(values.size()))]);
    if (chance(2))
      fields.insert(EntryFields::location,
                    PropertyListDictionary{{u"latitude"_s, qint64{3}}, {u"longitude"_s, 4.0}, {u"floor"_s, 2}});
    if (chance(1)) fields.remove(EntryFields::text);
  }

  std::mt19937_64 m_random{20'261'126};
};

class RoundTrip : public ExchangeFixture {};

// Equal, and of the same kinds.
QString exact(const PropertyListDictionary& fields) {
  return QString::fromUtf8(QJsonDocument(typedJson(fields).toObject()).toJson());
}

TEST_F(RoundTrip, JsonLosesNothing) {
  RandomEntries random;
  constexpr int count = 300;
  for (int i = 1; i <= count; ++i) store(journal, uuidOf(i), random.next(/*isStrange=*/true));
  const QString file = home.path(u"out.json"_s);
  const auto result = exported(journal, "json", file);
  ASSERT_EQ(result.entries, count) << (result.error ? result.error->description().toStdString() : "");
  ASSERT_EQ(result.damaged, 0);
  const auto looked = ExchangeFixture::looked(other, "json", file);
  EXPECT_EQ(looked.told, QStringList());
  EXPECT_EQ(looked.counts.added, count);
  EXPECT_TRUE(entriesOf(other).empty());
  Error error;
  ASSERT_TRUE(imported(other, "json", file, false, &error)) << error.description().toStdString();
  const Entries before = entriesOf(journal);
  const Entries after = entriesOf(other);
  ASSERT_EQ(before.size(), after.size());
  for (const auto& [name, fields] : before) EXPECT_EQ(exact(fields), exact(after.at(name))) << name.toStdString();
  // A second time nothing changes, in either journal.
  for (const Package& package : {journal, other}) EXPECT_EQ(imported(package, "json", file)->same, count);
  EXPECT_EQ(entriesOf(other), after);
}

TEST_F(RoundTrip, MarkdownFilesKeepWhatPeopleWrite) {
  RandomEntries random;
  constexpr int count = 300;
  for (int i = 1; i <= count; ++i) store(journal, uuidOf(i), random.next(/*isStrange=*/false));
  const QString folder = home.path(u"out"_s);
  ASSERT_EQ(exported(journal, "markdown-folder", folder).entries, count);
  ASSERT_EQ(QDir(folder).entryList(QDir::Files).size(), count);
  const auto looked = ExchangeFixture::looked(other, "markdown", folder);
  EXPECT_EQ(looked.told, QStringList());
  ASSERT_EQ(imported(other, "markdown", folder)->added, count);
  for (int i = 1; i <= count; ++i) {
    const auto before = QLJournalEntryFile::entryWithUUID(*journal, uuidOf(i), nullptr);
    const auto after = QLJournalEntryFile::entryWithUUID(*other, uuidOf(i), nullptr);
    ASSERT_TRUE(before && after) << i;
    EXPECT_EQ(before->string(), after->string()) << i;
    EXPECT_EQ(before->creationDate(), after->creationDate()) << i;
    EXPECT_EQ(before->timeZone(), after->timeZone()) << i;
    EXPECT_EQ(before->location(), after->location()) << i;
    EXPECT_EQ(before->weather(), after->weather()) << i;
    EXPECT_EQ(before->tags(), after->tags()) << i;
  }
  for (const Package& package : {journal, other}) EXPECT_EQ(imported(package, "markdown", folder)->added, 0);
}

}  // namespace
