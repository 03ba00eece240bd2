#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// Knows texts that entries had before.
class EntryAncestor {
 public:
  EntryAncestor() = default;
  virtual ~EntryAncestor() = default;
  EntryAncestor(const EntryAncestor&) = delete;
  EntryAncestor& operator=(const EntryAncestor&) = delete;

  // The text from which all of `versions` of the entry `uuid` were made; nothing unless that is certain. One that is
  // merely older will not do: what one machine wrote into it before the other had seen it would count as deleted there.
  [[nodiscard]] virtual std::optional<QString> textBefore(const QString& uuid, const QStringList& versions) = 0;
};

}  // namespace quillo
