#pragma once

#include "entry/spelling/GrammarIssue.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class GrammarTransport;

// Asks a LanguageTool server on this machine about a text. Nothing ever leaves the machine: servers that are not on a
// loopback address are refused, redirections are not followed and proxies are not used. Nothing waits, and nothing
// asks by itself.
class GrammarClient : public QObject {
  Q_OBJECT

 public:
  enum class Availability { Unknown, Available, Unavailable };
  // Nothing: there was no answer to use.
  using Answer = std::function<void(const std::optional<QList<GrammarIssue>>& issues)>;

  static constexpr qsizetype longestText = 8000;
  static constexpr qsizetype mostIssues = 100;
  static constexpr qsizetype mostReplacements = 5;

  // Whether a server may be asked at all.
  [[nodiscard]] static bool isOnThisMachine(const QUrl& server);
  // Asks nobody, and logs it, where `server` is not on this machine.
  explicit GrammarClient(const QUrl& server, QObject* parent = nullptr);
  ~GrammarClient() override;

  // Whether there is a server to ask.
  [[nodiscard]] bool hasServer() const { return !m_server.isEmpty(); }
  // Whether it answered when it was last asked.
  [[nodiscard]] Availability availability() const { return m_availability; }

  // Finds out whether the server is there; availabilityDidChange() tells.
  void probe();
  // The issues of `text`, without spelling; one question at a time, false while another one waits for its answer,
  // and without a server.
  bool check(const QString& text, Answer answer);

  // What a server's answer says about a text of `textLength` units; nothing for what is none of its answers.
  [[nodiscard]] static std::optional<QList<GrammarIssue>> issuesOfAnswer(const QByteArray& json, qsizetype textLength);

 Q_SIGNALS:
  void availabilityDidChange();

 private:
  [[nodiscard]] GrammarTransport* transport();
  void setAvailability(Availability availability);

  QUrl m_server;                                  // empty for none
  std::unique_ptr<GrammarTransport> m_transport;  // made on first use: it brings a thread along
  Availability m_availability{Availability::Unknown};
  bool m_isProbing{false};
  bool m_isChecking{false};
};

}  // namespace quillo
