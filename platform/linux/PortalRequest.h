#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace quillo {

namespace Portal {
inline constexpr QLatin1StringView service{"org.freedesktop.portal.Desktop"};
inline constexpr QLatin1StringView path{"/org/freedesktop/portal/desktop"};
}  // namespace Portal

// One question to the desktop portal. Its answer is not that of the call: it comes as a signal, perhaps only after the
// user has decided. Destroying the request stops waiting for it.
class PortalRequest final : public QObject {
  Q_OBJECT

 public:
  enum class Outcome {
    Done,
    // The user or the desktop said no.
    Refused,
    // There is no portal, or it cannot do this.
    Unsupported,
  };
  // Called once, from the event loop. `reason` says why it is not done.
  using Answer = std::function<void(Outcome outcome, const QVariantMap& results, const QString& reason)>;

  // Sends `call`, with `options` as its last argument.
  PortalRequest(const QDBusConnection& connection, QDBusMessage call, QVariantMap options, Answer answer,
                QObject* parent);

 private Q_SLOTS:
  void respond(uint response, const QVariantMap& results);

 private:
  bool listenAt(const QString& path);
  void finish(Outcome outcome, const QVariantMap& results, const QString& reason);

  QDBusConnection m_connection;
  QString m_path;
  Answer m_answer;
};

}  // namespace quillo
