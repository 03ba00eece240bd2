#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"

#include <QString>

#include <functional>
#include <optional>

namespace quillo {

class ImportRecordFolder;
class QLJournalPackageFile;

// Takes back the last import into a journal, at any later time and from any program: what it added goes to the Trash,
// what it replaced comes back. What was changed since stays as it is. When that is done, the import before it is the
// last; the ten latest can be taken back.
class ImportUndo {
 public:
  struct LastImport {
    QString source;  // the path of its file or folder
    QString format;  // ImportFormat::name
    Date date;
    qint64 added{0};
    qint64 replaced{0};
    // False where its program was killed; the next import begins with taking it back.
    bool isFinished{true};
  };
  // Reads a few lines of a file, but for an import that is not finished. Nothing where there is none to be taken back.
  [[nodiscard]] static std::optional<LastImport> lastImport(const QLJournalPackageFile& package);

  struct Counts {
    qint64 removed{0};  // or to be removed
    qint64 putBack{0};
    qint64 changed{0};  // since, and kept
    qint64 gone{0};     // deleted since

    bool operator==(const Counts&) const = default;
  };
  struct Listener {
    // An entry that stays as it is, and why, as the end of a sentence.
    std::function<void(const QString& uuid, const QString& reason)> kept{};
    std::function<void(qint64 done, qint64 total)> progress{};
    // Asked before each entry; true ends it.
    std::function<bool()> isStopped{};
  };

  // The package outlives the object.
  explicit ImportUndo(const QLJournalPackageFile& package) : m_package(package) {}

  // What taking it back would come to; nothing is changed. Nothing, with an error, as below.
  [[nodiscard]] std::optional<Counts> look(const Listener& listener, Error* error) const;
  // Takes it back. Nothing, with an error, where there is no import or an entry cannot be moved or written, or where it
  // was stopped: what was taken back until then stays so, and the rest can be taken back by another call.
  [[nodiscard]] std::optional<Counts> run(const Listener& listener, Error* error);

  // For an import that failed, or whose program was killed: what it added goes for good, since it comes from a source
  // that is still there and nobody was told that it is in the journal. The caller holds the records' folder.
  [[nodiscard]] static bool takeBackUnfinished(const QLJournalPackageFile& package, const ImportRecordFolder& records,
                                               const QString& recordPath, Error* error);

 private:
  const QLJournalPackageFile& m_package;
};

}  // namespace quillo
