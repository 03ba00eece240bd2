// The half of the grammar's client that needs the network library; a module that GrammarClient loads.

#include "entry/spelling/GrammarTransport.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

class NetworkTransport final : public GrammarTransport {
 public:
  NetworkTransport(int timeout, qint64 largestAnswer) : m_largestAnswer(largestAnswer) {
    m_network.setProxy(QNetworkProxy::NoProxy);
    m_network.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    m_network.setTransferTimeout(timeout);
  }

  void ask(const QUrl& url, const QByteArray& form, Answer answer) override {
    QNetworkRequest request(url);
    if (!form.isNull()) request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
    QNetworkReply* reply = form.isNull() ? m_network.get(request) : m_network.post(request, form);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [this, reply](qint64 received) {
      if (received > m_largestAnswer) reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, &m_network, [reply, answer = std::move(answer)] {
      reply->deleteLater();
      answer(reply->error() == QNetworkReply::NoError ? std::optional(reply->readAll()) : std::nullopt);
    });
  }

 private:
  QNetworkAccessManager m_network;
  qint64 m_largestAnswer;
};

}  // namespace

extern "C" Q_DECL_EXPORT void quilloMakeGrammarTransport(int timeout, qint64 largestAnswer,
                                                         std::unique_ptr<GrammarTransport>& transport) {
  transport = std::make_unique<NetworkTransport>(timeout, largestAnswer);
}

}  // namespace quillo
