#include "app/Messages.h"

#include "foundation/PropertyListSerialization.h"

#include <QFile>
#include <QRandomGenerator>

namespace quillo {

using namespace Qt::StringLiterals;

Messages::Messages(const Bundle& bundle, RandomNumber random)
    : m_bundle(bundle), m_random(random ? std::move(random) : [] { return QRandomGenerator::system()->generate(); }) {
  resetMessagesArray();
}

void Messages::resetMessagesArray() {
  m_currentIndex = 0;
  m_messagesArray.clear();
  const auto path = m_bundle.pathForResource(u"QuoteMessages"_s, u"plist"_s);
  if (!path) return;
  QFile file(*path);
  if (!file.open(QIODevice::ReadOnly)) return;
  const auto list = PropertyListSerialization::propertyListWithData(file.readAll());
  if (!list || !list->isArray()) return;
  for (const PropertyListValue& message : list->array())
    if (message.isString()) m_messagesArray << message.string();
}

QString Messages::nextMessage() {
  if (m_messagesArray.isEmpty()) qFatal("There is no quotation to choose from");
  // A little more often the first ones than the last, by less than one in ten million.
  m_currentMessage = m_messagesArray[m_random() % static_cast<quint32>(m_messagesArray.size())];
  return m_currentMessage;
}

void Messages::setMessagesMask(quint64) {}

}  // namespace quillo
