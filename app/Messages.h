#pragma once

#include "foundation/Bundle.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace quillo {

// The quotations that reminders carry, from the bundle's property list "QuoteMessages": an array of strings, read anew
// for each object.
class Messages {
 public:
  using RandomNumber = std::function<quint32()>;

  // Random numbers are the system's; a test gives its own.
  explicit Messages(const Bundle& bundle, RandomNumber random = {});

  // Reads the list again; empty when there is none, or it is no list of texts.
  void resetMessagesArray();

  // One of them at random, which may be the one before: there is no memory of earlier picks. There must be one: an
  // empty list ends the program.
  QString nextMessage();

  [[nodiscard]] const QStringList& messagesArray() const { return m_messagesArray; }
  // The one that nextMessage() answered last; null before.
  [[nodiscard]] const QString& currentMessage() const { return m_currentMessage; }
  void setCurrentMessage(const QString& message) { m_currentMessage = message; }
  // Does nothing; it is kept so.
  void setMessagesMask(quint64 mask);

 private:
  Bundle m_bundle;
  RandomNumber m_random;
  QStringList m_messagesArray;
  // Set to 0 with each reading; nothing advances it.
  [[maybe_unused]] quint64 m_currentIndex{0};
  QString m_currentMessage;
};

}  // namespace quillo
