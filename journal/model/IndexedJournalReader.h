#pragma once

#include "journal/model/JournalReader.h"
#include "qlcore/index/JournalIndexService.h"

namespace quillo {

class QLJournalPackageFile;

// Answers from the journal's index, which reads the files and notices their changes in a thread of its own.
class IndexedJournalReader final : public JournalReader {
  Q_OBJECT

 public:
  explicit IndexedJournalReader(const QLJournalPackageFile& package);

  void ask(QObject* asker, const JournalQuestion& question, Answered answered) override;
  void count(QObject* asker, const JournalQuestion& question, JournalCountBy by, Counted counted) override;
  void listDamaged(QObject* asker, Damaged listed) override;
  void listConflicts(QObject* asker, Conflicts listed) override;
  void filesDidChange(const QStringList& fileNames) override;
  void lookAgain() override;

 private:
  // The index answers one question of each kind an asker, and goes on answering: each of ours has an asker of its own,
  // that goes with the first answer or with who asked.
  [[nodiscard]] QObject* newAsker(QObject* owner);

  JournalIndexService m_index;
};

}  // namespace quillo
