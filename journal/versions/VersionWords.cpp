#include "journal/versions/VersionWords.h"

#include "journal/model/ClockTime.h"
#include "qlcore/ConflictNames.h"
#include "qlcore/EntryFields.h"
#include "qlcore/EntryTime.h"
#include "qlcore/QLLocation.h"

#include <QDateTime>

namespace quillo::VersionWords {

using namespace Qt::StringLiterals;

namespace {

QString moment(const QDateTime& time, const QLocale& locale) {
  return u"%1, %2"_s.arg(locale.toString(time.date(), u"d MMMM yyyy"_s), clockTime(time.time(), locale));
}

QString tagsOf(const EntryVersion& version, const QLocale&) {
  const QStringList tags = version.tags();
  return u"Tags: %1"_s.arg(tags.isEmpty() ? u"none"_s : tags.join(u", "_s));
}

// Whatever a file may hold there.
QString dateOf(const EntryVersion& version, const QLocale& locale) {
  const auto date = version.fields->value(EntryFields::creationDate).date();
  const PropertyListValue zone = version.fields->value(EntryFields::timeZone);
  if (!date) return u"Date: none"_s;
  return u"Date: %1"_s.arg(moment(localTime(*date, zone.isString() ? zone.string() : QString()), locale));
}

QString placeOf(const EntryVersion& version, const QLocale&) {
  const auto place = QLLocation::fromPropertyList(version.fields->value(EntryFields::location));
  if (!place) return u"Place: none"_s;
  return u"Place: %1"_s.arg(place->placeName.isEmpty() ? u"without a name"_s : place->placeName);
}

}  // namespace

QString count(qsizetype versions) {
  const QString number = versions == 2 ? u"Two"_s : versions == 3 ? u"Three"_s : QLocale().toString(versions);
  return u"%1 versions of this entry"_s.arg(number);
}

QString origin(const EntryVersion& version) {
  if (!version.copy) return u"The entry\u2019s own file"_s;
  const QString name = version.copy->origin == Synchroniser::Other ? u"A copy by another program"_s
                                                                   : ConflictNames::nameOf(version.copy->origin);
  return version.copy->from.isEmpty() ? name : u"%1, %2"_s.arg(name, version.copy->from);
}

QString saved(const EntryVersion& version, const QLocale& locale) {
  if (!version.isWhole()) return {};
  return u"Saved %1"_s.arg(moment(version.modificationDate().toDateTime().toLocalTime(), locale));
}

QStringList differences(const EntryVersion& version, const EntryVersion& other, const QLocale& locale) {
  QStringList lines;
  if (!version.isWhole() || !other.isWhole()) return lines;
  for (const auto& line : {&dateOf, &placeOf, &tagsOf})
    if (const QString own = line(version, locale); own != line(other, locale)) lines << own;
  return lines;
}

}  // namespace quillo::VersionWords
