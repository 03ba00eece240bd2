#pragma once

#include "foundation/Error.h"
#include "foundation/Trash.h"
#include "journal/model/JournalReader.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class QLJournalEntryFile;
class QLJournalPackageFile;

// The configured journal, as long as it is there: its entries, questions to it, deleting and taking that back. While it
// cannot be opened, questions find nothing. Main thread only.
class JournalLibrary : public JournalReader {
  Q_OBJECT

 public:
  struct Services {
    // Where the journal is; nothing while none is configured.
    std::function<std::optional<QUrl>()> location;
    // What answers questions to a journal.
    std::function<std::unique_ptr<JournalReader>(const QLJournalPackageFile& package)> makeReader;
  };
  enum class State { NotConfigured, Away, Open };

  // What was deleted together.
  struct Deletion {
    struct File {
      QString path;
      Trash::Item item;
    };
    struct Entry {
      QString identifier;
      QList<File> files;  // its other versions, and its own at last
    };
    QList<Entry> entries;
  };

  explicit JournalLibrary(Services services);
  ~JournalLibrary() override;

  // Looks where the journal is and opens it, unless that very one is open and there: then what has changed in it is
  // looked for, where need be. stateDidChange() tells of another state, and didChange() of another journal.
  void reopen();
  [[nodiscard]] State state() const { return m_state; }
  // Why it is away, in one sentence.
  [[nodiscard]] const QString& problem() const { return m_problem; }
  // As a person calls it; empty while it is not open.
  [[nodiscard]] QString name() const;
  // Empty while it is not open.
  [[nodiscard]] QString entriesFolder() const;
  // Null while it is not open.
  [[nodiscard]] const std::shared_ptr<QLJournalPackageFile>& package() const { return m_package; }

  // Null, with an error, where it cannot be read.
  [[nodiscard]] std::shared_ptr<QLJournalEntryFile> entry(const QString& identifier, Error* error) const;
  // The entry was saved by this program.
  void entryDidChange(const QString& identifier);

  // Moves entries to the Trash, with all their versions. What could be moved is in the answer; an error tells of the
  // first that could not.
  Deletion moveToTrash(const QStringList& identifiers, Error* error);
  // False, with an error, where one or a version of it could not be put back; the others are.
  bool putBack(const Deletion& deletion, Error* error);

  void ask(QObject* asker, const JournalQuestion& question, Answered answered) override;
  void count(QObject* asker, const JournalQuestion& question, JournalCountBy by, Counted counted) override;
  void listDamaged(QObject* asker, Damaged listed) override;
  void listConflicts(QObject* asker, Conflicts listed) override;
  void filesDidChange(const QStringList& fileNames) override;

 Q_SIGNALS:
  void stateDidChange();

 private:
  // Nothing, with an error, and nothing moved, where one of its files cannot be.
  [[nodiscard]] std::optional<Deletion::Entry> entryToTrash(const QString& identifier, const QStringList& copies,
                                                            Error* error);
  void close(State state, const QString& problem);

  Services m_services;
  State m_state{State::NotConfigured};
  QString m_problem;
  std::shared_ptr<QLJournalPackageFile> m_package;
  std::unique_ptr<JournalReader> m_reader;
};

}  // namespace quillo
