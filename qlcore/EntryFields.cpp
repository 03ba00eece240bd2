#include "qlcore/EntryFields.h"

#include "foundation/PropertyListSerialization.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"

namespace quillo::EntryFields {

using namespace Qt::StringLiterals;

bool isMissing(const Error& error) {
  return error.domain == ErrorDomain::cocoa && error.code == ErrorCode::fileReadNoSuchFile;
}

bool isDamage(const Error& error) {
  return error.domain == JournalError::domain && error.code == JournalError::EntryDamaged;
}

Error damage(const JournalFolder& folder, const QString& name, const QString& why) {
  return JournalError::make(JournalError::EntryDamaged,
                            u"%1/%2: the entry is damaged, %3"_s.arg(folder.path(), name, why));
}

std::optional<PropertyListDictionary> read(const JournalFolder& folder, const QString& name, Error* error) {
  const auto bytes = folder.readFile(name, error);
  return bytes ? parse(folder, name, *bytes, error) : std::nullopt;
}

std::optional<PropertyListDictionary> parse(const JournalFolder& folder, const QString& name, const QByteArray& bytes,
                                            Error* error) {
  Error reason;
  const auto list = PropertyListSerialization::propertyListWithData(bytes, nullptr, &reason);
  if (list && list->isDictionary()) return list->dictionary();
  fail(error, damage(folder, name, list ? u"it is not a dictionary"_s : reason.localizedDescription));
  return std::nullopt;
}

// XML, as entries are; but values of unknown keys may be such that only a binary list holds them. Every reader takes
// both, and losing the entry over another program's key would be worse.
std::optional<QByteArray> serialized(const PropertyListDictionary& fields, Error* error) {
  if (auto bytes = PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML)) return bytes;
  return PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::Binary, error);
}

}  // namespace quillo::EntryFields
