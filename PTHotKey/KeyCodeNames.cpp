#include "PTHotKey/KeyCodeNames.h"

#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>

// In a library, so that every program and test that links it has the names. Outside of any namespace, as the macro
// asks for.
static void makeResourceAvailable() {
  Q_INIT_RESOURCE(PTKeyCodes);
}

namespace quillo {

using namespace Qt::StringLiterals;

static std::optional<PropertyListDictionary> dictionaryOf(const Bundle& bundle) {
  makeResourceAvailable();
  const auto path = bundle.pathForResource(u"PTKeyCodes"_s, u"plist"_s);
  QFile file(path.value_or(QString()));
  if (!path || !file.open(QFile::ReadOnly)) return std::nullopt;
  // No more is asked for than there is: the whole of it would be set aside first.
  const QByteArray bytes = file.read(std::min(file.size(), largestFileRead));
  QStringDecoder decoder(QStringDecoder::Utf8);
  const QString text = decoder(bytes);
  if (decoder.hasError()) return std::nullopt;
  const auto list = PropertyListSerialization::propertyListWithData(bytes);
  if (!list || !list->isDictionary()) return std::nullopt;
  return list->dictionary();
}

PropertyListDictionary KeyCodeNames::dictionary() {
  if (!m_dictionary) m_dictionary = dictionaryOf(m_bundle);
  return m_dictionary.value_or(PropertyListDictionary());
}

}  // namespace quillo
