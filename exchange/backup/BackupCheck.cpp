#include "exchange/backup/BackupCheck.h"

#include "foundation/PropertyListSerialization.h"
#include "qlcore/JournalPackageLayout.h"

#include <QFile>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// No entry comes near; it is looked at no further.
constexpr qint64 largestPropertyList = qint64{64} * 1024 * 1024;
constexpr qsizetype mostNamed = 100;

class Look final : public BackupReader::Visitor {
 public:
  explicit Look(BackupCheck& check) : m_check(check) {}

  bool beginFile(const std::string& path, qint64 size, Error*) override {
    ++m_check.files;
    m_check.bytes += size;
    m_isEntry = isEntryPath(path);
    m_isProperties = path == JournalPackageLayout::propertiesFile.data();
    m_isTooLarge = size > largestPropertyList;
    m_bytes.clear();
    if (isWanted() && !m_isTooLarge) m_bytes.reserve(size);
    return true;
  }

  bool data(QByteArrayView bytes, Error*) override {
    if (isWanted() && !m_isTooLarge) m_bytes.append(bytes);
    return true;
  }

  bool endFile(const std::string& path, time_t, Error*) override {
    if (!isWanted()) return true;
    const auto list = m_isTooLarge ? std::nullopt : PropertyListSerialization::propertyListWithData(m_bytes);
    const bool isReadable = list && list->isDictionary();
    if (m_isProperties) m_hasProperties = isReadable;
    if (!m_isEntry) return true;
    ++m_check.entries;
    if (isReadable) return true;
    ++m_check.damaged;
    if (m_check.damagedEntries.size() < mostNamed) m_check.damagedEntries << QFile::decodeName(path.c_str());
    return true;
  }

  [[nodiscard]] bool hasProperties() const { return m_hasProperties; }

 private:
  [[nodiscard]] bool isWanted() const { return m_isEntry || m_isProperties; }

  BackupCheck& m_check;
  QByteArray m_bytes;
  bool m_isEntry{false};
  bool m_isProperties{false};
  bool m_isTooLarge{false};
  bool m_hasProperties{false};
};

}  // namespace

BackupCheck BackupCheck::of(BackupReader& reader, const BackupReader::Progress& progress) {
  BackupCheck check;
  check.manifest = reader.manifest();
  Look look(check);
  Error error;
  if (!reader.readAll(look, progress, &error))
    check.error = error;
  else if (!look.hasProperties())
    check.error =
        cocoaError(ErrorCode::fileReadCorrupt,
                   u"the journal in it has no %1 that can be read"_s.arg(JournalPackageLayout::propertiesFile));
  check.isStopped = reader.isStopped();
  return check;
}

BackupCheck BackupCheck::of(const QString& path, const BackupReader::Progress& progress) {
  Error error;
  const auto reader = BackupReader::open(path, &error);
  if (reader) return of(*reader, progress);
  BackupCheck check;
  check.error = error;
  return check;
}

}  // namespace quillo
