#pragma once

#include "foundation/Error.h"

#include <QString>
#include <QStringList>

namespace quillo {

// A hidden file beside a journal that is about to get its name in a new folder: whose copy it is. It is there until the
// new journal is the configured one, and so tells of a copy that a kill has left in between.
class JournalMoveMark {
 public:
  // `source` is the journal that is moved, `target` the place in the new folder; both canonical.
  JournalMoveMark(const QString& source, const QString& target);

  bool make(Error* error) const;
  void remove() const;

  // Whether `target` is such a copy of `source`, and nobody has written into it since: all that it has, the source has
  // as well.
  [[nodiscard]] bool findsLeftover() const;
  // Removes the marks of moves that are over.
  void removeLeftovers() const;

 private:
  [[nodiscard]] QStringList marksLeft() const;

  QString m_source;
  QString m_target;
  QString m_path;
};

}  // namespace quillo
