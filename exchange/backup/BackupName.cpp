#include "exchange/backup/BackupName.h"

#include <QRegularExpression>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView ending{".quillojournal.tar.zst"};
constexpr QLatin1StringView temporaryEnding{".tmp"};

// Names of files have 255 bytes, and the time, the ending and what marks a temporary one need their room.
QString shortened(QString name) {
  constexpr qsizetype mostBytes = 180;
  // Each turn takes a character.
  while (name.toUtf8().size() > mostBytes) name.chop(name.back().isLowSurrogate() ? 2 : 1);
  return name;
}

}  // namespace

QString BackupName::fileName() const {
  const QString again = number > 1 ? u"-%1"_s.arg(number) : QString();
  return shortened(journal) + begun.toString(u"-yyyy-MM-dd-HHmmss"_s) + again + ending;
}

QString BackupName::temporaryName() const {
  return u'.' + fileName() + temporaryEnding;
}

std::optional<BackupName> BackupName::of(const QString& fileName) {
  static const QRegularExpression pattern(
      u"^([^.].*)-(\\d{4}-\\d\\d-\\d\\d-\\d{6})(?:-([1-9]\\d{0,3}))?\\.quillojournal\\.tar\\.zst$"_s,
      QRegularExpression::DotMatchesEverythingOption);
  const auto match = pattern.match(fileName);
  const QDateTime begun = QDateTime::fromString(match.captured(2), u"yyyy-MM-dd-HHmmss"_s);
  if (!match.hasMatch() || !begun.isValid()) return std::nullopt;
  return BackupName{match.captured(1), begun, match.captured(3).isEmpty() ? 1 : match.captured(3).toInt()};
}

bool BackupName::isTemporary(const QString& fileName) {
  return fileName.startsWith(u'.') && fileName.endsWith(temporaryEnding) &&
         of(fileName.sliced(1, fileName.size() - 1 - temporaryEnding.size())).has_value();
}

}  // namespace quillo
