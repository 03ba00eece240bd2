#pragma once

#include "exchange/ImportSource.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

namespace quillo {

// An entry of the diary program jrnl, as one of its files tells it.
struct JrnlEntry {
  int line{0};
  QString moment;  // "2020-06-28 18:22"
  QString title;   // the first sentence
  QString body;
  QStringList tags;
  bool isStarred{false};
};

// Makes entries of ours: the text is the title's line and the body's; a star becomes the tag "starred". jrnl gives its
// entries no identifiers and writes them anew into files of any name, so they are known again by their moment and
// title, those that have both in common by their order.
class JrnlEntries {
 public:
  explicit JrnlEntries(bool makesTagsOfHashtags) : m_makesTags(makesTagsOfHashtags) {}

  ImportItem itemOf(const JrnlEntry& entry, const QString& path);

 private:
  bool m_makesTags;
  QHash<QString, int> m_counts;
};

// The entries of a text as jrnl keeps it: each begins with a line "[2020-06-28 18:22] Title", in files of its first
// version without the brackets. Tags are words that begin with "@". The first that is called for what stands above all
// entries has no moment. Until `take` answers false; so does this then.
bool forEachJrnlEntry(const QByteArray& utf8, const std::function<bool(const JrnlEntry& entry)>& take);

// Whether the text begins like one of those, with brackets or with two such lines without them.
[[nodiscard]] bool isLikeJrnl(const QString& beginning);

}  // namespace quillo
