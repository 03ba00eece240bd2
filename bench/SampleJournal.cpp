#include "SampleJournal.h"

#include "foundation/PropertyListSerialization.h"

#include <QFile>
#include <QStringList>
#include <QUuid>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int vocabulary = 30'000;

const QStringList& commonWords() {
  static const QStringList words =
      u"the and to I of a was in it we that with for on my at had but not is so as he this she they have be all there from were her then his what when me day today out up by one about an after them which some very would like just can been time home more no if went will into good could only our over again back now how well down who got little long their work before did too him than came first much made evening morning walked still other new way where talked later two house thought people coffee read because through last any harbour café naïve über Zürich déjà résumé crème smörgås señor façade"_s
          .split(u' ');
  return words;
}

// A word made of syllables: which ones says its number. Some beginnings are more frequent than others.
QString madeWord(int number) {
  static const QStringList consonants = u"s c p d r b m f t h l g w n v st pr br k j"_s.split(u' ');
  static const QString vowels = u"aeiou"_s;
  const double share = number * 7919 % 1000 / 1000.0;
  int syllable = static_cast<int>(share * share * 100);
  QString word;
  for (int rest = number * 7 + 11; rest > 0; rest /= 90) {
    word += consonants[syllable / 5] + vowels[syllable % 5];
    syllable = rest % 100;
  }
  return number % 40 == 0 ? word + u"é"_s : word + consonants[number % 15];
}

class Samples {
 public:
  explicit Samples(unsigned seed) : m_random(seed) {
    // The n-th word comes about 1/n as often as the first.
    double sum = 0;
    for (int i = 0; i < vocabulary; ++i) m_sums.push_back(sum += 1.0 / (i + 2.7));
  }

  int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

  QString word() {
    const double at = std::uniform_real_distribution<double>(0, m_sums.back())(m_random);
    return sampleWord(static_cast<int>(std::lower_bound(m_sums.begin(), m_sums.end(), at) - m_sums.begin()));
  }

  QString text() {
    static const QStringList unparted{u"今日は天気が良くて、港まで歩きました。"_s, u"今天我们去了海边，天气很好。"_s,
                                      u"오늘은 날씨가 좋아서 항구까지 걸었다."_s};
    QString text;
    const int words = 25 + below(100);
    for (int i = 0; i < words; ++i) text += (i == 0 ? u""_s : i % 13 == 0 ? u". "_s : u" "_s) + word();
    if (below(25) == 0) text += u"\n"_s + unparted[below(3)] + unparted[below(3)];
    return text;
  }

  QByteArray entry(QString& uuid) {
    static const QStringList places{u"Oslo, Norway"_s, u"Zürich, Switzerland"_s, u"New York, United States"_s,
                                    u"東京, Japan"_s, u"São Paulo, Brazil"_s};
    const double created = 1'420'000'000.0 + static_cast<double>(below(10 * 365)) * 86'400 + below(86'400);
    const QUuid random(m_random(), static_cast<ushort>(m_random()), static_cast<ushort>(m_random()), uchar(below(256)),
                       uchar(below(256)), uchar(below(256)), uchar(below(256)), uchar(below(256)), uchar(below(256)),
                       uchar(below(256)), uchar(below(256)));
    uuid = random.toString(QUuid::WithoutBraces).toUpper();
    PropertyListArray tags;
    QString words = text();
    for (int i = below(4); i > 0; --i) {
      const QString tag = u"tag%1"_s.arg(static_cast<int>(std::pow(200.0, below(1000) / 1000.0)));
      tags << tag;
      words += u" #"_s + tag;
    }
    PropertyListDictionary fields{{u"uuid"_s, uuid},
                                  {u"text"_s, words},
                                  {u"creationDate"_s, Date::since1970(created)},
                                  {u"modificationDate"_s, Date::since1970(created + below(1000))},
                                  {u"timeZone"_s, u"Europe/Berlin"_s},
                                  {u"tags"_s, tags}};
    if (below(2) == 0)
      fields.insert(
          u"location"_s,
          PropertyListDictionary{{u"latitude"_s, 59.9}, {u"longitude"_s, 10.7}, {u"placeName"_s, places[below(5)]}});
    if (below(3) == 0)
      fields.insert(u"weather"_s, PropertyListDictionary{{u"temperature"_s, double(below(30))},
                                                         {u"symbolCode"_s, u"rain"_s},
                                                         {u"text"_s, u"Rain"_s},
                                                         {u"provider"_s, u"MET Norway"_s}});
    return *PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML);
  }

 private:
  std::mt19937 m_random;
  std::vector<double> m_sums;
};

}  // namespace

QString sampleWord(int rank) {
  return rank < commonWords().size() ? commonWords()[rank] : madeWord(rank);
}

bool makeSampleEntries(const QString& path, int count, unsigned seed) {
  Samples samples(seed);
  for (int i = 0; i < count; ++i) {
    QString uuid;
    const QByteArray bytes = samples.entry(uuid);
    QFile file(path + u'/' + uuid + u".plist"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) return false;
  }
  return true;
}

}  // namespace quillo
