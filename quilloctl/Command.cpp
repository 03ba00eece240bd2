#include "quilloctl/Command.h"

#include "qlcore/QLJournalPackageFile.h"

namespace quillo::ctl {

using namespace Qt::StringLiterals;

PersistentPropertyList* sharedList(Context& context) {
  Error error;
  PersistentPropertyList* list = context.config.groupProperties(&error);
  if (!list) failed(u"the settings cannot be read - %1"_s.arg(error.localizedDescription));
  return list;
}

bool isSaved(const PersistentPropertyList& list, const QString& what) {
  if (list.dirtyProperties().isEmpty()) return true;
  const auto& error = list.lastError();
  failed(u"%1 was not saved - %2"_s.arg(what, error ? error->localizedDescription : u"the reason is unknown"_s));
  return false;
}

std::shared_ptr<QLJournalPackageFile> openJournal(Context& context) {
  if (!sharedList(context)) return nullptr;
  const auto url = context.config.configuredJournalFileURL();
  if (!url) {
    failed(u"No journal is configured"_s);
    return nullptr;
  }
  Error error;
  auto package = QLJournalPackageFile::openPackage(*url, /*create=*/false, &error);
  if (!package) failed(error.localizedDescription);
  return package;
}

CLI::Validator atLeastOne() {
  return CLI::Validator(
      [](const std::string& word) {
        return QString::fromStdString(word).toLongLong() > 0 ? std::string() : "a whole number from 1 is expected";
      },
      "");
}

CLI::Validator notEmpty(const std::string& expected) {
  return CLI::Validator([expected](const std::string& word) { return word.empty() ? expected : std::string(); }, "");
}

}  // namespace quillo::ctl
