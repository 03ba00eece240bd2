#pragma once

#include <QString>

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>

namespace quillo {
class QLJournalPackageFile;
}

namespace quillo::ctl {

// How a command line names an entry: by the whole of its identifier, by a beginning that no other entry has, or, with
// -1, as the newest.
class EntryIdentifier {
 public:
  // Makes the command take one.
  static std::shared_ptr<EntryIdentifier> addTo(CLI::App& command);

  // The identifier as a whole, which need not be one of an entry where it was given so; nothing, with the reason said,
  // when no entry or more than one is meant.
  [[nodiscard]] std::optional<QString> resolve(const QLJournalPackageFile& package) const;

 private:
  std::string m_beginning;
  bool m_isNewest{false};
};

}  // namespace quillo::ctl
