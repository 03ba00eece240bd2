#include "quilloctl/EntryIdentifier.h"

#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/JournalIndex.h"
#include "quilloctl/Streams.h"

#include <algorithm>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

std::nullopt_t none(const QString& reason) {
  failed(reason);
  return std::nullopt;
}

bool canBegin(const QString& text) {
  constexpr qsizetype whole = 36;
  return !text.isEmpty() && text.size() < whole && std::all_of(text.begin(), text.end(), [](QChar c) {
    return c == u'-' || (c >= u'0' && c <= u'9') || (c.toLower() >= u'a' && c.toLower() <= u'f');
  });
}

// Of damaged entries, too, in ascending order: the names of the files say it, without a look into them.
QStringList identifiersBeginningWith(const QLJournalPackageFile& package, const QString& beginning) {
  const auto folder = JournalFolder::open(package.entriesFolder(), nullptr);
  const auto names = folder ? folder->propertyListNames(nullptr, beginning) : std::nullopt;
  QStringList found;
  for (const QString& name : names.value_or(QStringList()))
    if (const auto uuid = QLJournalEntryFile::canonicalUUID(name.chopped(6))) found << *uuid;
  found.sort();
  // An entry may have a file in lower case beside its own.
  found.removeDuplicates();
  return found;
}

std::optional<QString> newest(const QLJournalPackageFile& package) {
  const auto index = indexOfJournal(package);
  if (!index) return std::nullopt;
  const auto uuid = index->newestUUID();
  return uuid ? uuid : none(u"there is no entry yet"_s);
}

}  // namespace

std::shared_ptr<EntryIdentifier> EntryIdentifier::addTo(CLI::App& command) {
  auto identifier = std::make_shared<EntryIdentifier>();
  const CLI::Option* beginning =
      command.add_option("ID", identifier->m_beginning, "The beginning of its identifier, which list prints");
  const CLI::Option* isNewest = command.add_flag("-1", identifier->m_isNewest, "The newest entry");
  // Called before the command's own callback.
  command.parse_complete_callback([beginning, isNewest] {
    if (beginning->count() + isNewest->count() == 0) throw CLI::RequiredError("ID");
    if (beginning->count() > 0 && isNewest->count() > 0) throw CLI::ExcludesError("ID", "-1");
  });
  return identifier;
}

std::optional<QString> EntryIdentifier::resolve(const QLJournalPackageFile& package) const {
  if (m_isNewest) return newest(package);
  const QString beginning = QString::fromStdString(m_beginning);
  // One that cannot be a part is told of by whoever looks for the whole.
  if (!canBegin(beginning)) return beginning;
  const QStringList found = identifiersBeginningWith(package, beginning);
  if (found.size() == 1) return found.first();
  if (found.isEmpty()) return none(u"there is no entry whose identifier begins with \"%1\""_s.arg(beginning));
  constexpr qsizetype told = 5;
  const QString more = found.size() > told ? u" and %1 more"_s.arg(found.size() - told) : QString();
  return none(u"\"%1\" is the beginning of %2 entries: %3%4"_s.arg(beginning, QString::number(found.size()),
                                                                   found.mid(0, told).join(u", "_s), more));
}

}  // namespace quillo::ctl
