#include "qlcore/services/PlaceSearch.h"

#include "qlcore/services/PlaceTable.h"
#include "qlcore/services/QLLocationFormatter.h"

#include <algorithm>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Letters that no decomposition makes plain ones of.
QString plainLetter(QChar c) {
  switch (c.unicode()) {
    case u'ø':
      return u"o"_s;
    case u'ł':
      return u"l"_s;
    case u'đ':
    case u'ð':
      return u"d"_s;
    case u'ı':
      return u"i"_s;
    case u'æ':
      return u"ae"_s;
    case u'œ':
      return u"oe"_s;
    case u'þ':
      return u"th"_s;
    case u'’':
    case u'‘':
    case u'ʻ':
      return u"'"_s;
    default:
      return c;
  }
}

// As it is compared: without case, accents and the like.
QString folded(const QString& text) {
  QString plain;
  const QString parts = text.toCaseFolded().normalized(QString::NormalizationForm_KD);
  for (const QChar c : parts)
    if (c.category() != QChar::Mark_NonSpacing) plain += plainLetter(c);
  return plain;
}

// `beginning` is folded, and in UTF-8. Most names are told apart by their first plain letters, without making a text of
// them.
bool beginsWith(QByteArrayView name, const QByteArray& beginning) {
  for (qsizetype i = 0; i < beginning.size(); ++i) {
    if (i >= name.size()) return false;
    const char c = name[i];
    if (static_cast<uchar>(c) >= 0x80) return folded(QString::fromUtf8(name)).toUtf8().startsWith(beginning);
    const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    if (lower != beginning[i]) return false;
  }
  return true;
}

}  // namespace

QList<FoundPlace> placesNamed(const QString& text, const QLLocationFormatter& formatter, qsizetype most) {
  const QString sought = folded(text.simplified());
  const QByteArray name = sought.section(u',', 0, 0).trimmed().toUtf8();
  const QString country = sought.section(u',', 1).trimmed();
  if (name.isEmpty()) return {};
  const PlaceTable& table = PlaceTable::shared();
  std::vector<size_t> indexes;
  for (size_t i = 0; i < table.count(); ++i)
    if (beginsWith(table.name(i), name)) indexes.push_back(i);
  std::stable_sort(indexes.begin(), indexes.end(),
                   [&table](size_t a, size_t b) { return table.population(a) > table.population(b); });

  QList<FoundPlace> found;
  for (const size_t index : indexes) {
    if (found.size() >= most) break;
    const QString title = formatter.nameOfPlace(table.place(index));
    if (!country.isEmpty() && !folded(title.section(u',', -1).trimmed()).startsWith(country)) continue;
    const QLLocation location{table.latitude(index), table.longitude(index), title};
    const bool isTaken =
        std::any_of(found.begin(), found.end(), [&](const auto& other) { return other.title == title; });
    // There is more than one Springfield in a country.
    found.append({isTaken ? u"%1 (%2)"_s.arg(title, QLLocationFormatter::coordinates(location)) : title, location});
  }
  return found;
}

}  // namespace quillo
