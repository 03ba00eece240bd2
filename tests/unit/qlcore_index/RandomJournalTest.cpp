#include "IndexFixture.h"

#include <QMap>

#include <algorithm>
#include <functional>
#include <random>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What is written, and the words that it is found by, parted by spaces.
struct Sample {
  QString written;
  QString folded;
};

const QList<Sample>& samples() {
  static const QList<Sample> list{
      {u"sea"_s, u"sea"_s},
      {u"Sea"_s, u"sea"_s},
      {u"seaside"_s, u"seaside"_s},
      {u"the"_s, u"the"_s},
      {u"The"_s, u"the"_s},
      {u"café"_s, u"cafe"_s},
      {u"Cafe"_s, u"cafe"_s},
      {u"cafeteria"_s, u"cafeteria"_s},
      {u"Straße"_s, u"strasse"_s},
      {u"don't"_s, u"don t"_s},
      {u"東京"_s, u"東 京"_s},
      {u"京都"_s, u"京 都"_s},
      {u"東京港"_s, u"東 京 港"_s},
      {u"한국"_s, u"한 국"_s},
      {u"カフェ"_s, u"カ フ ェ"_s},
      {u"ёлка"_s, u"елка"_s},
      {u"2024"_s, u"2024"_s},
      {u"s"_s, u"s"_s},
      {u"🎉"_s, u"🎉"_s},
      {u"t"_s, u"t"_s},
  };
  return list;
}

struct ModelEntry {
  QStringList words;
  QSet<QString> tags;
  QString tagName;
  QStringList tagWords;
  QStringList place;
  QDate day;
};

bool holds(const QStringList& words, const QStringList& sought, bool isPrefix) {
  for (qsizetype at = 0; at + sought.size() <= words.size(); ++at) {
    bool isSame = true;
    for (qsizetype i = 0; i < sought.size() && isSame; ++i)
      isSame = isPrefix && i + 1 == sought.size() ? words[at + i].startsWith(sought[i]) : words[at + i] == sought[i];
    if (isSame) return true;
  }
  return false;
}

}  // namespace

// Questions about a journal that changes all the time are answered as by looking through all of its entries.
class RandomJournalTest : public IndexFixture {
 protected:
  int below(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }

  void writeEntry(int number) {
    ModelEntry entry;
    QString text;
    for (int i = below(12); i > 0; --i) {
      const Sample& sample = samples()[below(static_cast<int>(samples().size()))];
      text += (text.isEmpty() ? u""_s : below(4) == 0 ? u", "_s : u" "_s) + sample.written;
      entry.words << sample.folded.split(u' ');
    }
    PropertyListDictionary fields;
    if (below(2) == 0) {
      const Sample& sample = samples()[below(static_cast<int>(samples().size()))];
      entry.tags << sample.folded;
      entry.tagWords = sample.folded.split(u' ');
      fields.insert(u"tags"_s, PropertyListArray{sample.written});
    }
    if (below(2) == 0) {
      entry.place = {u"new"_s, below(2) == 0 ? u"york"_s : u"sea"_s};
      fields.insert(u"location"_s, PropertyListDictionary{{u"latitude"_s, 1.0},
                                                          {u"longitude"_s, 2.0},
                                                          {u"placeName"_s, u"New "_s + entry.place[1].toUpper()}});
    }
    // Few days, and often the same second; at the end of a day in one zone, at the beginning of the next in another.
    const bool isEast = below(2) == 0;
    fields.insert(u"timeZone"_s, isEast ? u"Pacific/Kiritimati"_s : u"Pacific/Honolulu"_s);
    fields.insert(u"modificationDate"_s, Date::since1970(1'800'000'000 + below(2)));
    const int noon = 1'740'830'400 + below(20) * 86'400;  // from 2025-03-01T12:00:00Z
    entry.day = QDateTime::fromSecsSinceEpoch(noon + (isEast ? 14 : -10) * 3600, Qt::UTC).date();
    write(number, text, noon, fields);
    model[uuidOf(number)] = entry;
  }

  void change() {
    const int number = below(60);
    switch (below(6)) {
      case 0:
        QFile::remove(pathOf(number));
        model.remove(uuidOf(number));
        break;
      case 1:
        writeBytes(pathOf(number), "half of an ent");
        model.remove(uuidOf(number));
        break;
      default:
        writeEntry(number);
    }
    changed << uuidOf(number) + u".plist"_s;
  }

  // One entry's file becomes as another's is, or damaged.
  void changeInPlace() {
    const int number = below(60);
    const int other = below(60);
    if (!QFile::exists(pathOf(number))) return;
    const bool isWhole = model.contains(uuidOf(other));
    writeInPlace(number, isWhole ? contentsOfFile(pathOf(other)).value_or("") : QByteArray("half of an ent"));
    if (isWhole)
      model[uuidOf(number)] = model[uuidOf(other)];
    else
      model.remove(uuidOf(number));
  }

  struct Condition {
    QString typed;
    std::function<bool(const ModelEntry&)> holds;
  };

  Condition condition(bool mayBePrefix) {
    const Sample& sample = samples()[below(static_cast<int>(samples().size()))];
    QStringList words = sample.folded.split(u' ');
    const auto inAny = [](const QStringList& sought, bool isPrefix) {
      return [sought, isPrefix](const ModelEntry& entry) {
        return holds(entry.words, sought, isPrefix) || holds(entry.tagWords, sought, isPrefix) ||
               holds(entry.place, sought, isPrefix);
      };
    };
    switch (below(8)) {
      case 0: {
        const auto found = inAny(words, false);
        return {u"-"_s + sample.written, [found](const ModelEntry& entry) { return !found(entry); }};
      }
      case 1: {
        const Sample& second = samples()[below(static_cast<int>(samples().size()))];
        return {u'"' + sample.written + u' ' + second.written + u'"', inAny(words + second.folded.split(u' '), false)};
      }
      case 2:
        return {u"tag:"_s + sample.written,
                [sample](const ModelEntry& entry) { return entry.tags.contains(sample.folded); }};
      case 3:
        return {u"place:sea"_s, [](const ModelEntry& entry) { return entry.place.contains(u"sea"_s); }};
      case 4: {
        const QDate day = QDate(2025, 3, 1).addDays(below(22));
        if (below(2) == 0)
          return {u"since:"_s + day.toString(Qt::ISODate), [day](const ModelEntry& entry) { return entry.day >= day; }};
        return {u"before:"_s + day.toString(Qt::ISODate), [day](const ModelEntry& entry) { return entry.day < day; }};
      }
      case 5:
        if (mayBePrefix) {
          // An unfinished word.
          const QString begun = u"c ca caf s se str d 2 2024 е"_s.split(u' ')[below(10)];
          return {begun, inAny({begun}, true)};
        }
        [[fallthrough]];
      default: {
        if (!mayBePrefix) return {u'"' + sample.written + u'"', inAny(words, false)};
        // The last word may be unfinished, but for single characters and a single letter behind others.
        const bool isPrefix = words.size() == 1 && sample.written.at(0).isLetterOrNumber();
        return {sample.written, inAny(words, isPrefix)};
      }
    }
  }

  void compare(JournalSearchIndex& index) {
    const QLJournalIndex plain(package);
    for (int turn = 0; turn < 12; ++turn) {
      QList<Condition> conditions;
      for (int i = below(3); i > 0; --i) conditions << condition(false);
      conditions << condition(true);
      QString typed;
      for (const Condition& part : conditions) typed += part.typed + u' ';
      QStringList expected;
      for (const auto& entry : plain.entries()) {
        const ModelEntry& known = model[entry->uuid()];
        if (std::all_of(conditions.begin(), conditions.end(), [&](const Condition& part) { return part.holds(known); }))
          expected << entry->uuid();
      }
      // A contradiction is no question.
      const auto asked = JournalQuestion::parse(typed, QDate(2025, 3, 12));
      if (!asked) continue;
      check(index, *asked, expected, typed);
    }
  }

  void check(JournalSearchIndex& index, JournalQuestion asked, QStringList expected, const QString& typed) {
    asked.order = static_cast<JournalQuestion::Order>(below(3));
    asked.offset = below(4);
    asked.limit = below(2) == 0 ? 1000 : below(6);
    const JournalAnswer answer = index.ask(asked);
    ASSERT_EQ(answer.total, expected.size()) << typed.toStdString();
    if (asked.order == JournalQuestion::Order::OldestFirst) std::reverse(expected.begin(), expected.end());
    QStringList uuids;
    for (const IndexedEntry& entry : answer.entries) {
      uuids << entry.uuid;
      EXPECT_EQ(entry.day, model[entry.uuid].day);
      for (const TextRange& match : entry.matches) EXPECT_GT(match.length, 0);
    }
    if (asked.order == JournalQuestion::Order::BestFirst) {
      if (asked.limit < 1000 || asked.offset > 0) return;
      uuids.sort();
      expected.sort();
    }
    ASSERT_EQ(uuids, expected.mid(asked.offset, asked.limit)) << typed.toStdString();
    qint64 sum = 0;
    for (const JournalCount& count : index.counts(asked, JournalCountBy::Day)) sum += count.count;
    EXPECT_EQ(sum, answer.total) << typed.toStdString();
  }

  std::mt19937 random{20240512};
  QMap<QString, ModelEntry> model;
  QStringList changed;
};

TEST_F(RandomJournalTest, IsAnsweredAsByLookingThroughAllEntries) {
  auto index = std::make_unique<JournalSearchIndex>(*package);
  for (int turn = 0; turn < 60 && !HasFatalFailure(); ++turn) {
    changed.clear();
    for (int i = below(8); i > 0; --i) change();
    if (below(5) == 0) index = std::make_unique<JournalSearchIndex>(*package);
    if (below(3) == 0)
      index->bringUpToDate(changed);
    else
      index->bringUpToDate();
    if (below(6) == 0)
      while (index->tidyUp()) continue;
    compare(*index);
  }
  // Nothing but changes within the files, which the folder does not show.
  settle(*index);
  for (int turn = 0; turn < 20 && !HasFatalFailure(); ++turn) {
    for (int i = below(8); i > 0; --i) changeInPlace();
    if (below(5) == 0) index = std::make_unique<JournalSearchIndex>(*package);
    index->bringUpToDate();
    compare(*index);
  }
  EXPECT_FALSE(index->isInMemory());
}

}  // namespace quillo
