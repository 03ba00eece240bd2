#pragma once

#include "qlcore/conflicts/EntryVersions.h"
#include "qlcore/index/IndexedEntry.h"
#include "qlcore/index/JournalQuestion.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

namespace quillo {

// Answers questions to a journal. Answers come later, in the thread that asked, in the order of the questions; what is
// known comes at once, and didChange() tells that the same question may have another answer now.
class JournalReader : public QObject {
  Q_OBJECT

 public:
  using Answered = std::function<void(const JournalAnswer&)>;
  using Counted = std::function<void(const QList<JournalCount>&)>;
  using Damaged = std::function<void(const QList<IndexedDamage>&)>;
  using Conflicts = std::function<void(const QList<ConflictedEntry>&)>;

  // Callbacks are not called once the reader or the asker is gone, who may go to say that it does not want to know.
  virtual void ask(QObject* asker, const JournalQuestion& question, Answered answered) = 0;
  virtual void count(QObject* asker, const JournalQuestion& question, JournalCountBy by, Counted counted) = 0;
  virtual void listDamaged(QObject* asker, Damaged listed) = 0;
  // The entries that have other versions, by identifier.
  virtual void listConflicts(QObject* asker, Conflicts listed) = 0;
  // These files of the folder of entries were changed by this program.
  virtual void filesDidChange(const QStringList& fileNames) = 0;
  // The person has come back to it: where nobody tells of other programs' changes, they are looked for now.
  virtual void lookAgain() {}

 Q_SIGNALS:
  void didChange();
  // Of the first reading, and after many changes; equal when it is done.
  void progressed(qsizetype done, qsizetype total);
};

}  // namespace quillo
