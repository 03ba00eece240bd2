#pragma once

#include "foundation/Date.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>

namespace quillo {

// Text of the entry window that is not in the journal yet, kept in a file so that a crash does not lose it. Mode 0600.
// It was among the caches once; what is found there is moved at the first use. Where there are two, the older one waits
// beside, under a name that ends in ".older", for the first process that finds the newer one gone.
class EntryDraft {
 public:
  struct Content {
    QString text;
    QString entryIdentifier;  // of the entry that the text is a later state of; empty for one not yet saved
    std::optional<Date> editBeginDate;
    // Of an entry that is not saved yet and is to be of another time than that of its first save.
    std::optional<Date> creationDate{};
    // What else has been found or chosen for such an entry; a time zone only where it is not that of the system.
    QString timeZone{};
    QStringList tags{};
    std::optional<QLLocation> location{};
    std::optional<QLWeather> weather{};
    // When it was written; known of what was left behind only.
    std::optional<Date> writtenDate{};

    bool operator==(const Content&) const = default;
  };

  // `path` of the file; its folder is made on the first write. `formerPath` is where an older version kept it.
  explicit EntryDraft(QString path, QString formerPath = {});

  // The draft in the user's state, and where it was.
  [[nodiscard]] static QString defaultPath();
  [[nodiscard]] static QString defaultFormerPath();

  // Whether takeLeftBehind() has something to answer.
  [[nodiscard]] bool isLeftBehind();

  // What an earlier process left behind; answered once, by the first call that comes before a write. A file that cannot
  // be read is kept beside, under a name that ends in ".damaged".
  [[nodiscard]] std::optional<Content> takeLeftBehind();

  // Writes what `content` answers then, if anything, a little later; within two seconds however fast the user types on.
  void writeSoon(std::function<std::optional<Content>()> content);
  void write(const Content& content);
  // Forgets a write that is still to come, too. A file that was neither read nor written by this object stays.
  void remove();

 private:
  void moveHereOnce();

  QString m_path;
  QString m_formerPath;  // empty once it was looked at
  QTimer m_timer;
  std::function<std::optional<Content>()> m_content;
  bool m_isTaken{false};
  bool m_hasFile{false};  // as far as this object knows
  bool m_failureIsLogged{false};
};

}  // namespace quillo
