#include "exchange/backup/BackupManifest.h"

#include "foundation/PropertyListSerialization.h"
#include "qlcore/JournalPackageLayout.h"
#include "qlcore/StorableValues.h"

#include <algorithm>
#include <string_view>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 currentFormatVersion = 1;
constexpr QLatin1StringView formatVersionKey{"formatVersion"};
constexpr QLatin1StringView journalKey{"journal"};
constexpr QLatin1StringView identifierKey{"journalIdentifier"};
constexpr QLatin1StringView dateKey{"date"};
constexpr QLatin1StringView entriesKey{"entries"};
constexpr QLatin1StringView filesKey{"files"};
constexpr QLatin1StringView bytesKey{"bytes"};

constexpr qsizetype digestLength = 32;
// Of a text of checksums; far above that of the longest path.
constexpr qsizetype longestLine = qsizetype{64} * 1024;

// A line break in a name would end the line. sha256sum marks such lines with a backslash in front.
QByteArray escaped(const std::string& path) {
  QByteArray name = QByteArray::fromStdString(path);
  return name.replace('\\', "\\\\").replace('\n', "\\n").replace('\r', "\\r");
}

std::optional<std::string> unescaped(QByteArrayView text) {
  std::string path;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      path += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    if (text[i] == 'n')
      path += '\n';
    else if (text[i] == 'r')
      path += '\r';
    else if (text[i] == '\\')
      path += '\\';
    else
      return std::nullopt;
  }
  return path;
}

}  // namespace

QByteArray BackupManifest::toPropertyList() const {
  const PropertyListDictionary content{{formatVersionKey, currentFormatVersion},
                                       {journalKey, storableText(journal)},
                                       {identifierKey, storableText(journalIdentifier)},
                                       {dateKey, begun},
                                       {entriesKey, entries},
                                       {filesKey, files},
                                       {bytesKey, bytes}};
  return PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML).value_or(QByteArray());
}

std::optional<BackupManifest> BackupManifest::fromPropertyList(const QByteArray& bytes, Error* error) {
  const auto list = PropertyListSerialization::propertyListWithData(bytes, nullptr, error);
  if (!list) return std::nullopt;
  const PropertyListDictionary& fields = list->dictionary();
  const auto refuse = [error](const QString& why) {
    fail(error, cocoaError(ErrorCode::fileReadCorrupt, why));
    return std::nullopt;
  };
  const qint64 version = fields.value(formatVersionKey).integerValue();
  if (version < 1) return refuse(u"it names no format version"_s);
  if (version > currentFormatVersion) return refuse(u"it was made by a newer version"_s);
  const auto date = storableDate(fields.value(dateKey));
  if (!date) return refuse(u"it has no date"_s);
  BackupManifest manifest{fields.value(journalKey).string(),
                          fields.value(identifierKey).string(),
                          *date,
                          fields.value(entriesKey).integerValue(),
                          fields.value(filesKey).integerValue(),
                          fields.value(bytesKey).integerValue()};
  if (manifest.entries < 0 || manifest.files < manifest.entries || manifest.bytes < 0)
    return refuse(u"its numbers cannot be"_s);
  return manifest;
}

QByteArray checksumText(const BackupChecksums& checksums) {
  QByteArray text;
  for (const auto& [path, digest] : checksums) {
    const QByteArray name = escaped(path);
    if (name.size() != static_cast<qsizetype>(path.size())) text += '\\';
    text += digest.toHex() + "  " + name + '\n';
  }
  return text;
}

bool ChecksumTextReader::read(QByteArrayView part, const Take& take) {
  m_rest += part;
  qsizetype at = 0;
  // Each turn takes a line.
  for (qsizetype end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n', at)) {
    if (!readLine(QByteArrayView(m_rest).sliced(at, end - at), take)) return false;
    at = end + 1;
  }
  m_rest.remove(0, at);
  return m_rest.size() <= longestLine;
}

bool ChecksumTextReader::readLine(QByteArrayView line, const Take& take) {
  const bool isEscaped = line.startsWith('\\');
  if (isEscaped) line = line.sliced(1);
  constexpr qsizetype hexLength = 2 * digestLength;
  if (line.size() <= hexLength + 2 || line.sliced(hexLength, 2) != QByteArrayView("  ")) return false;
  const QByteArray digest = QByteArray::fromHex(line.first(hexLength).toByteArray());
  const QByteArrayView name = line.sliced(hexLength + 2);
  const auto path = isEscaped ? unescaped(name) : std::optional(name.toByteArray().toStdString());
  if (digest.size() != digestLength || !path || *path <= m_last) return false;
  m_last = *path;
  return take(*path, digest);
}

bool isEntryPath(const std::string& path) {
  static const std::string folder = QByteArray(JournalPackageLayout::entriesFolder.data()).toStdString() + "/";
  if (!path.starts_with(folder) || !path.ends_with(".plist")) return false;
  const std::string_view name = std::string_view(path).substr(folder.size());
  return !name.starts_with('.') && name.find('/') == std::string_view::npos;
}

}  // namespace quillo
