#include "entry/spelling/GrammarClient.h"

#include "entry/spelling/GrammarTransport.h"
#include "foundation/LoadableModule.h"
#include "foundation/Log.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int timeout = 10000;  // milliseconds
constexpr qint64 largestAnswer = qint64{1024} * 1024;

// Of an address in numbers; names are none.
bool isLoopbackAddress(const QByteArray& host) {
  in6_addr address{};
  if (::inet_pton(AF_INET6, host.constData(), &address) == 1) return IN6_IS_ADDR_LOOPBACK(&address);
  in_addr shortAddress{};
  return ::inet_pton(AF_INET, host.constData(), &shortAddress) == 1 &&
         (ntohl(shortAddress.s_addr) >> IN_CLASSA_NSHIFT) == IN_LOOPBACKNET;
}

QUrl below(QUrl server, const QString& path) {
  server.setPath(path);
  return server;
}

std::optional<GrammarIssue> issueOfMatch(const QJsonObject& match, qsizetype textLength) {
  const TextRange range{match["offset"_L1].toInteger(-1), match["length"_L1].toInteger(-1)};
  // Compared so that no sum can overflow.
  if (range.location < 0 || range.length <= 0 || range.length > textLength ||
      range.location > textLength - range.length)
    return std::nullopt;
  // Spelling is checked without a server.
  if (match["rule"_L1]["issueType"_L1].toString() == "misspelling"_L1) return std::nullopt;
  GrammarIssue issue{range, match["message"_L1].toString().simplified().left(200), {}};
  for (const QJsonValue replacement : match["replacements"_L1].toArray()) {
    if (issue.replacements.size() >= GrammarClient::mostReplacements) break;
    const QString value = replacement["value"_L1].toString();
    if (!value.isEmpty() && value.size() <= 200) issue.replacements << value;
  }
  return issue;
}

}  // namespace

bool GrammarClient::isOnThisMachine(const QUrl& server) {
  return server.scheme() == "http"_L1 &&
         (server.host() == "localhost"_L1 || isLoopbackAddress(server.host().toLatin1()));
}

GrammarClient::GrammarClient(const QUrl& server, QObject* parent) : QObject(parent) {
  if (isOnThisMachine(server))
    m_server = server;
  else
    QLLogWarn(u"Grammar is not checked: %1 is not on this machine"_s.arg(server.toDisplayString()));
}

GrammarClient::~GrammarClient() = default;

GrammarTransport* GrammarClient::transport() {
  static LoadableModule module(u"quillo-grammar"_s);
  if (!m_transport)
    if (auto* const make = module.function<MakeGrammarTransport>("quilloMakeGrammarTransport"))
      make(timeout, largestAnswer, m_transport);
  return m_transport.get();
}

void GrammarClient::setAvailability(Availability availability) {
  if (m_availability == availability) return;
  m_availability = availability;
  Q_EMIT availabilityDidChange();
}

void GrammarClient::probe() {
  if (m_isProbing) return;
  if (!hasServer() || !transport()) return setAvailability(Availability::Unavailable);
  m_isProbing = true;
  transport()->ask(below(m_server, u"/v2/languages"_s), {}, [this](const std::optional<QByteArray>& body) {
    m_isProbing = false;
    setAvailability(body && QJsonDocument::fromJson(*body).isArray() ? Availability::Available
                                                                     : Availability::Unavailable);
  });
}

bool GrammarClient::check(const QString& text, Answer answer) {
  if (!hasServer() || m_isChecking || text.size() > longestText || !transport()) return false;
  m_isChecking = true;
  const QByteArray form = "language=auto&text=" + QUrl::toPercentEncoding(text);
  transport()->ask(below(m_server, u"/v2/check"_s), form,
                   [this, size = text.size(), answer = std::move(answer)](const std::optional<QByteArray>& body) {
                     m_isChecking = false;
                     const auto issues = body ? issuesOfAnswer(*body, size) : std::nullopt;
                     setAvailability(issues ? Availability::Available : Availability::Unavailable);
                     answer(issues);
                   });
  return true;
}

std::optional<QList<GrammarIssue>> GrammarClient::issuesOfAnswer(const QByteArray& json, qsizetype textLength) {
  const QJsonDocument document = QJsonDocument::fromJson(json);
  const QJsonValue matches = document.object()["matches"_L1];
  if (!matches.isArray()) return std::nullopt;
  QList<GrammarIssue> issues;
  for (const QJsonValue match : matches.toArray()) {
    if (issues.size() >= mostIssues) break;
    if (auto issue = issueOfMatch(match.toObject(), textLength)) issues << *issue;
  }
  return issues;
}

}  // namespace quillo
