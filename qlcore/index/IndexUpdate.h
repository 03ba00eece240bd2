#pragma once

#include "qlcore/index/EntryRecord.h"
#include "qlcore/index/IndexKeeper.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QByteArray>
#include <QString>

#include <stop_token>
#include <vector>

namespace quillo {

class FolderScan;
class JournalFolder;
class KnownFiles;

// Brings the tables up to date with the folder of entries, once. A failure of the database ends it early.
class IndexUpdate {
 public:
  IndexUpdate(IndexKeeper& keeper, const QString& entriesFolder, unsigned threads)
      : m_keeper(keeper), m_entriesFolder(entriesFolder), m_threads(threads) {}

  [[nodiscard]] JournalSearchIndex::Update all(const std::stop_token& stop,
                                               const JournalSearchIndex::ProgressCallback& progress);
  [[nodiscard]] JournalSearchIndex::Update some(const QStringList& fileNames);

 private:
  struct Difference {
    std::vector<QByteArray> toRead;
    std::vector<QByteArray> toRemove;
    CopyNames copies;  // of all entries that are read
  };
  // Of what is known and the folder. What is known is all that the folder holds once the difference is written.
  [[nodiscard]] static Difference compare(const KnownFiles& known, const FolderScan& scan);
  static void compareCopies(const KnownFiles& known, const FolderScan& scan, Difference& difference);
  [[nodiscard]] Difference named(const QStringList& fileNames, int folder);
  void removeEverything(JournalSearchIndex::Update& update);
  // Answers how many were left out.
  qsizetype readAndWrite(const JournalFolder& folder, int descriptor, Difference difference,
                         JournalSearchIndex::Update& update, const std::stop_token& stop,
                         const JournalSearchIndex::ProgressCallback& progress);
  void settlePrefixes(const JournalFolder& folder, int descriptor, const std::vector<QByteArray>& names);
  void startAnewIfGrown();
  void makeSecondaryIndexes();

  IndexKeeper& m_keeper;
  QString m_entriesFolder;
  unsigned m_threads;
};

}  // namespace quillo
