#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

namespace quillo {

// A forecast as the weather service writes it: one time, with temperature and symbol.
inline QByteArray forecast(const QByteArray& time, const QByteArray& temperature, const QByteArray& symbol) {
  return R"({"type":"Feature","properties":{"meta":{},"timeseries":[{"time":")" + time +
         R"(","data":{"instant":{"details":{"air_temperature":)" + temperature +
         R"(}},"next_1_hours":{"summary":{"symbol_code":")" + symbol + R"("},"details":{}}}}]}})";
}

inline QByteArray response(const QByteArray& status, const QByteArray& headers, const QByteArray& body) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
         "\r\nContent-Type: application/json\r\n" + headers + "\r\n" + body;
}

// A web server on this machine that gives the one prepared answer and keeps what it was asked.
class WeatherServer final : public QObject {
 public:
  WeatherServer() {
    server.listen(QHostAddress::LocalHost);
    connect(&server, &QTcpServer::newConnection, this, [this] { accept(); });
  }

  [[nodiscard]] QUrl url() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1/weatherapi/locationforecast/2.0").arg(server.serverPort()));
  }
  void stop() { server.close(); }

  QByteArray answer;  // nothing at all where empty
  bool closesAfterAnswer{false};
  QList<QByteArray> requests;  // heads, lower case
  // Called when a request has been read, before it is answered.
  std::function<void()> onRequest;

 private:
  void accept() {
    while (QTcpSocket* const socket = server.nextPendingConnection()) {
      connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
      connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
    }
  }
  void read(QTcpSocket* socket) {
    QByteArray& head = m_heads[socket];
    head += socket->readAll();
    if (!head.endsWith("\r\n\r\n")) return;
    requests << head.toLower();
    head.clear();
    if (onRequest) onRequest();
    socket->write(answer);
    if (closesAfterAnswer) socket->disconnectFromHost();
  }

  QTcpServer server;
  QHash<QTcpSocket*, QByteArray> m_heads;
};

}  // namespace quillo
