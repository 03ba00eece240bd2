#include "entry/spelling/GrammarClient.h"

#include "foundation/Log.h"

#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QUrlQuery>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int timeout = 10000;  // milliseconds
constexpr qint64 largestAnswer = qint64{1024} * 1024;

bool isOnThisMachine(const QUrl& server) {
  return server.scheme() == "http"_L1 && (server.host() == "localhost"_L1 || QHostAddress(server.host()).isLoopback());
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

GrammarClient::GrammarClient(const QUrl& server, QObject* parent) : QObject(parent) {
  if (isOnThisMachine(server))
    m_server = server;
  else
    QLLogWarn(u"Grammar is not checked: %1 is not on this machine"_s.arg(server.toDisplayString()));
}

GrammarClient::~GrammarClient() = default;

QNetworkAccessManager& GrammarClient::network() {
  // Made on first use: it brings a thread along.
  if (!m_network) {
    m_network = new QNetworkAccessManager(this);
    m_network->setProxy(QNetworkProxy::NoProxy);
    m_network->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    m_network->setTransferTimeout(timeout);
  }
  return *m_network;
}

void GrammarClient::setAvailability(Availability availability) {
  if (m_availability == availability) return;
  m_availability = availability;
  Q_EMIT availabilityDidChange();
}

void GrammarClient::bound(QNetworkReply& reply) {
  connect(&reply, &QNetworkReply::downloadProgress, &reply, [&reply](qint64 received) {
    if (received > largestAnswer) reply.abort();
  });
  connect(&reply, &QNetworkReply::finished, &reply, &QObject::deleteLater);
}

void GrammarClient::probe() {
  if (m_isProbing) return;
  if (!hasServer()) return setAvailability(Availability::Unavailable);
  m_isProbing = true;
  QNetworkReply* reply = network().get(QNetworkRequest(below(m_server, u"/v2/languages"_s)));
  bound(*reply);
  connect(reply, &QNetworkReply::finished, this, [this, reply] {
    m_isProbing = false;
    const bool answered =
        reply->error() == QNetworkReply::NoError && QJsonDocument::fromJson(reply->readAll()).isArray();
    setAvailability(answered ? Availability::Available : Availability::Unavailable);
  });
}

bool GrammarClient::check(const QString& text, Answer answer) {
  if (!hasServer() || m_isChecking || text.size() > longestText) return false;
  m_isChecking = true;
  QNetworkRequest request(below(m_server, u"/v2/check"_s));
  request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
  const QByteArray form = "language=auto&text=" + QUrl::toPercentEncoding(text);
  QNetworkReply* reply = network().post(request, form);
  bound(*reply);
  connect(reply, &QNetworkReply::finished, this, [this, reply, size = text.size(), answer = std::move(answer)] {
    m_isChecking = false;
    std::optional<QList<GrammarIssue>> issues;
    if (reply->error() == QNetworkReply::NoError) issues = issuesOfAnswer(reply->readAll(), size);
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
