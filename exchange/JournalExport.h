#pragma once

#include "exchange/EntryWriter.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace quillo {

class QLJournalPackageFile;

// Takes the entries that a question finds out of a journal, a portion at a time, so that memory stays the same however
// many there are.
class JournalExport {
 public:
  struct Options {
    JournalQuestion question;  // its offset and limit play no part
    // Where there are some, these entries in place of those that a question finds, in the order of the list.
    QStringList identifiers{};
    bool wantsFields{false};
    bool wantsMonths{false};
    bool isStrict{false};  // an entry that cannot be read ends it
  };
  struct Result {
    qint64 entries{0};
    qint64 damaged{0};
    // Entries came or went while they were read: some may not be there.
    bool isDisturbed{false};
    bool isStopped{false};
    // Why it ended before its end.
    std::optional<Error> error;
  };
  using Progress = std::function<void(qint64 done, qint64 total)>;
  // One line with a file's path and what is wrong with it.
  using DamageCallback = std::function<void(const QString& reason)>;

  // `index` is up to date.
  JournalExport(const QLJournalPackageFile& package, JournalSearchIndex& index) : m_package(package), m_index(index) {}

  void onProgress(Progress progress) { m_progress = std::move(progress); }
  void onDamage(DamageCallback damage) { m_damage = std::move(damage); }
  // Asked before each entry; true ends it.
  void stopWhen(std::function<bool()> isStopped) { m_isStopped = std::move(isStopped); }

  [[nodiscard]] Result run(const Options& options, EntryWriter& writer);

 private:
  void tellOfDamage(const QString& reason, Result& result) const;
  [[nodiscard]] ExportOverview overview(const Options& options) const;
  // The identified ones are few enough to be kept.
  [[nodiscard]] QList<IndexedEntry> identifiedEntries(const Options& options, Result& result) const;
  bool addAll(const Options& options, qint64 total, EntryWriter& writer, Result& result);
  bool addPortion(const QList<IndexedEntry>& entries, const Options& options, EntryWriter& writer, Result& result);

  const QLJournalPackageFile& m_package;
  JournalSearchIndex& m_index;
  Progress m_progress;
  DamageCallback m_damage;
  std::function<bool()> m_isStopped;
};

}  // namespace quillo
