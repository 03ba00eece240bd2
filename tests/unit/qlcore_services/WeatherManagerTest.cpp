#include "WeatherServer.h"
#include "foundation/FileContents.h"
#include "foundation/UserDefaults.h"
#include "qlcore/services/OnlineServices.h"
#include "qlcore/services/QLWeatherManager.h"
#include "qlcore/services/WeatherError.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeTimers.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

const Date noon = *Date::fromISO8601(u"2026-11-25T12:00:00Z"_s);
const QByteArray partlyCloudy = forecast("2026-11-25T12:00:00Z", "18.4", "partlycloudy_day");

struct FakeClock final : Clock {
  [[nodiscard]] double secondsSince1970() const override { return now; }
  double now{0};
};

struct Outcome {
  std::optional<QLWeather> weather{};
  std::optional<Error> error{};
};

class WeatherManagerTest : public testing::Test {
 protected:
  WeatherManagerTest() { restart(); }

  // At noon, with nothing kept and nothing asked so far.
  void restart(int timeoutMilliseconds = 5000) {
    clock.setTime(noon.timeIntervalSince1970());
    server.requests.clear();
    manager = std::make_unique<QLWeatherManager>(
        clock, QLWeatherManager::Settings{.baseURL = server.url(), .timeoutMilliseconds = timeoutMilliseconds});
  }
  // At the time that it is, with what an earlier one has kept.
  void restartWithCache() {
    server.requests.clear();
    manager = std::make_unique<QLWeatherManager>(
        clock, QLWeatherManager::Settings{.baseURL = server.url(), .cacheFile = cacheFile});
  }
  void request(double latitude = 59.9139, double longitude = 10.7522, Date date = noon) {
    manager->weatherAtLatitude(
        latitude, longitude, date, [this](const QLWeather& weather) { outcomes.push_back({.weather = weather}); },
        [this](const Error& error) { outcomes.push_back({.error = error}); });
  }
  // Asks and waits for the outcome.
  Outcome ask(double latitude = 59.9139, double longitude = 10.7522, Date date = noon) {
    outcomes.clear();
    request(latitude, longitude, date);
    EXPECT_TRUE(outcomes.empty()) << "called back from inside the call";
    EXPECT_TRUE(runUntil([this] { return !outcomes.empty(); }));
    handlePendingEvents();
    EXPECT_EQ(outcomes.size(), 1U);
    return outcomes.empty() ? Outcome() : outcomes.front();
  }
  // The code of the failure, or 0 for a weather.
  qint64 failureOf(const Outcome& outcome) {
    EXPECT_NE(outcome.weather.has_value(), outcome.error.has_value());
    if (!outcome.error) return 0;
    EXPECT_EQ(outcome.error->domain, WeatherError::domain);
    return outcome.error->code;
  }

  FakeTimers clock;
  WeatherServer server;
  TestHome home;
  QString cacheFile{home.path(u".cache/quillo/Weather.json"_s)};
  std::unique_ptr<WeatherService> manager;
  std::vector<Outcome> outcomes;
};

TEST_F(WeatherManagerTest, AsksAsTheServiceWants) {
  server.answer = response("200 OK", "Set-Cookie: id=1\r\n", partlyCloudy);
  const Outcome outcome = ask();
  EXPECT_EQ(outcome.weather, (QLWeather{18.4, u"partlycloudy_day"_s, u"Partly cloudy"_s, noon, u"MET Norway"_s}));
  ask();
  ASSERT_EQ(server.requests.size(), 2);
  const QByteArray& head = server.requests[1];
  EXPECT_TRUE(head.startsWith("get /weatherapi/locationforecast/2.0/compact?lat=59.9139&lon=10.7522 http/1.1\r\n"))
      << head.toStdString();
  EXPECT_TRUE(head.contains("\r\nuser-agent: quilloagent/1.0 (https://quilloapp.example)\r\n")) << head.toStdString();
  EXPECT_TRUE(head.contains("\r\naccept-encoding: ") && head.contains("gzip")) << head.toStdString();
  EXPECT_TRUE(head.contains("\r\naccept-language: *\r\n"));
  EXPECT_FALSE(head.contains("cookie"));
  EXPECT_FALSE(head.contains("if-modified-since"));
}

TEST_F(WeatherManagerTest, CutsCoordinatesToFourDecimalsAndAsksForNoPlaceThatIsNone) {
  constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double latitude, longitude;
    QByteArray query;
  } rows[] = {
      {59.91399, 10.75229, "lat=59.9139&lon=10.7522"},
      {0.00009, -0.00009, "lat=0.0000&lon=0.0000"},
      {90, -180, "lat=90.0000&lon=-180.0000"},
      {8.29, 0.0007, "lat=8.2900&lon=0.0007"},
      {91, 0, {}},
      {notANumber, 0, {}},
  };
  server.answer = response("200 OK", "", partlyCloudy);
  for (const auto& row : rows) {
    const qint64 failure = failureOf(ask(row.latitude, row.longitude));
    EXPECT_EQ(failure == WeatherError::InvalidPlace, row.query.isEmpty());
    ASSERT_EQ(server.requests.isEmpty(), row.query.isEmpty());
    if (row.query.isEmpty()) continue;
    EXPECT_TRUE(server.requests.takeLast().contains(row.query + " http")) << row.query.toStdString();
  }
}

TEST_F(WeatherManagerTest, TakesAForecastAndNothingElse) {
  const QByteArray large(1024 * 1024 + 1, ' ');
  const QByteArray zeros(9 * 1024 * 1024, '\0');
  const struct {
    const char* name;
    QByteArray answer;
    qint64 failure;
  } rows[] = {
      {"deprecated", response("203 Non-Authoritative Information", "", partlyCloudy), 0},
      {"unauthorized", response("401 Unauthorized", "WWW-Authenticate: Basic realm=\"x\"\r\n", ""),
       WeatherError::Refused},
      {"forbidden", response("403 Forbidden", "", partlyCloudy), WeatherError::Refused},
      {"unavailable", response("503 Service Unavailable", "", ""), WeatherError::Refused},
      {"nothing to confirm", response("304 Not Modified", "", ""), WeatherError::BadAnswer},
      {"empty", response("200 OK", "", ""), WeatherError::BadAnswer},
      {"half", response("200 OK", "", partlyCloudy.first(100)), WeatherError::BadAnswer},
      {"too large", response("200 OK", "", partlyCloudy + large), WeatherError::BadAnswer},
      {"deflated", response("200 OK", "Content-Encoding: deflate\r\n", qCompress(partlyCloudy).sliced(4)), 0},
      {"too large when inflated", response("200 OK", "Content-Encoding: deflate\r\n", qCompress(zeros).sliced(4)),
       WeatherError::BadAnswer},
      {"not the web's", "SSH-2.0-OpenSSH_9.2\r\n", WeatherError::NotReachable},
      {"of another time", response("200 OK", "", forecast("2026-11-25T18:00:01Z", "1", "fog")),
       WeatherError::NoForecast},
  };
  for (const auto& row : rows) {
    restart();
    server.answer = row.answer;
    server.closesAfterAnswer = row.failure == WeatherError::NotReachable;
    EXPECT_EQ(failureOf(ask()), row.failure) << row.name;
    EXPECT_FALSE(server.requests.isEmpty()) << row.name;
  }
}

TEST_F(WeatherManagerTest, GivesUpOnAnAnswerThatBreaksOffOrHangs) {
  const QByteArray whole = response("200 OK", "", partlyCloudy);
  for (const bool hangs : {false, true})
    for (const QByteArray& part : {QByteArray(), whole.chopped(20)}) {
      restart(hangs ? 100 : 5000);
      server.answer = part;
      server.closesAfterAnswer = !hangs;
      EXPECT_EQ(failureOf(ask()), WeatherError::NotReachable);
      // The next question is a new one.
      server.answer = whole;
      EXPECT_EQ(failureOf(ask()), 0);
    }
  restart();
  server.stop();
  EXPECT_EQ(failureOf(ask()), WeatherError::NotReachable);
}

TEST_F(WeatherManagerTest, UsesAnAnswerUntilItExpiresButForNoMoreThanADay) {
  const Date tomorrow = noon.addingTimeInterval(86400);
  const auto requestsAfterAsking = [&](double latitude, double longitude) {
    EXPECT_EQ(ask(latitude, longitude, tomorrow).weather->temperature, 1);
    return server.requests.size();
  };
  for (const auto& [expires, seconds] : {std::pair<QByteArray, double>{"Tue, 25 Nov 2036 12:30:00 GMT", 86400},
                                         {"Wed, 25 Nov 2026 12:30:00 GMT", 1800}}) {
    restart();
    server.answer = response("200 OK", "Expires: " + expires + "\r\n", forecast("2026-11-26T12:00:00Z", "1", "fog"));
    EXPECT_EQ(requestsAfterAsking(59.9139, 10.7522), 1);
    clock.setTime(clock.secondsSince1970() + seconds - 1);
    EXPECT_EQ(requestsAfterAsking(59.91393, 10.75221), 1);
    EXPECT_EQ(requestsAfterAsking(60, 10), 2);
    clock.setTime(clock.secondsSince1970() + 1);
    EXPECT_EQ(requestsAfterAsking(59.9139, 10.7522), 3);
  }
  // Set back behind the time of the answer.
  clock.setTime(clock.secondsSince1970() - 7200);
  EXPECT_EQ(requestsAfterAsking(59.9139, 10.7522), 4);
}

TEST_F(WeatherManagerTest, KeepsOnlySomeAnswers) {
  server.answer = response("200 OK", "Expires: Wed, 25 Nov 2026 14:00:00 GMT\r\n", partlyCloudy);
  for (int i = 0; i <= 16; ++i) {
    ask(i, i);
    clock.setTime(clock.secondsSince1970() + 1);
  }
  ask(16, 16);
  ask(1, 1);
  EXPECT_EQ(server.requests.size(), 17);
  ask(0, 0);  // the oldest made room
  EXPECT_EQ(server.requests.size(), 18);
  // With the clock set back, the answer that has just come is the oldest.
  clock.setTime(clock.secondsSince1970() - 3600);
  EXPECT_TRUE(ask(20, 20).weather);
}

TEST_F(WeatherManagerTest, IsSilentForAsLongAsTheServiceAsks) {
  const struct {
    QByteArray status;
    QByteArray header;
    double seconds;
  } rows[] = {
      {"429 Too Many Requests", "Retry-After: 120\r\n", 120},
      {"503 Service Unavailable", "Retry-After: Wed, 25 Nov 2026 12:05:00 GMT\r\n", 300},
      {"429 Too Many Requests", "", 600},
      {"403 Forbidden", "", 3600},
      {"429 Too Many Requests", "Retry-After: 0\r\n", 60},
      {"429 Too Many Requests", "Retry-After: 4000000000\r\n", 86400},
  };
  for (const auto& row : rows) {
    const std::string name = row.status.toStdString() + ' ' + row.header.toStdString();
    restart();
    QFile::remove(cacheFile);
    restartWithCache();
    server.answer = response(row.status, row.header, "");
    EXPECT_NE(failureOf(ask()), 0) << name;
    server.answer = response("200 OK", "", partlyCloudy);
    clock.setTime(clock.secondsSince1970() + row.seconds - 1);
    EXPECT_EQ(failureOf(ask(60, 10)), WeatherError::TooMany) << name;
    EXPECT_EQ(server.requests.size(), 1) << name;
    // The next start keeps to it.
    restartWithCache();
    EXPECT_EQ(failureOf(ask()), WeatherError::TooMany) << name;
    clock.setTime(clock.secondsSince1970() + 1);
    ask();
    EXPECT_EQ(server.requests.size(), 1) << name;
  }
}

TEST_F(WeatherManagerTest, ARestartKnowsTheAnswersAndAsksForChangesOnly) {
  server.answer = response("200 OK",
                           "Expires: Wed, 25 Nov 2026 12:30:00 GMT\r\nLast-Modified: Wed, 25 Nov 2026 11:45:07 GMT\r\n"
                           "ETag: \"a-1\"\r\n",
                           partlyCloudy);
  restartWithCache();
  const Outcome first = ask();
  EXPECT_EQ(modeOf(cacheFile), 0600);
  restartWithCache();
  EXPECT_EQ(ask().weather, first.weather);
  EXPECT_TRUE(server.requests.isEmpty());
  clock.setTime(clock.secondsSince1970() + 1800);
  server.answer = "HTTP/1.1 304 Not Modified\r\nExpires: Wed, 25 Nov 2026 13:00:00 GMT\r\n\r\n";
  restartWithCache();
  EXPECT_EQ(ask().weather, first.weather);
  ASSERT_EQ(server.requests.size(), 1);
  EXPECT_TRUE(server.requests[0].contains("\r\nif-modified-since: wed, 25 nov 2026 11:45:07 gmt\r\n"));
  EXPECT_TRUE(server.requests[0].contains("\r\nif-none-match: \"a-1\"\r\n"));
  restartWithCache();
  ask();
  EXPECT_TRUE(server.requests.isEmpty()) << "the confirmation is kept as well";

  // A file that is damaged, too large or another service's has nothing.
  QFile file(cacheFile);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray good = file.readAll();
  file.close();
  server.answer = response("200 OK", "", partlyCloudy);
  for (const QByteArray& bad :
       {QByteArray(), good.chopped(9), QByteArray("[7]"), QByteArray(good).replace("-1", "\\r\\nX: 1"),
        QByteArray(good).replace("127.0.0.1", "127.0.0.2"), good + QByteArray(1024 * 1024, ' ')}) {
    ASSERT_TRUE(writeFileInPlace(cacheFile, bad));
    restartWithCache();
    EXPECT_EQ(ask().weather, first.weather);
    ASSERT_EQ(server.requests.size(), 1) << bad.left(80).toStdString();
    EXPECT_FALSE(server.requests[0].contains("if-")) << bad.left(80).toStdString();
  }
}

TEST_F(WeatherManagerTest, FollowsARedirectToASecureAddressOnly) {
  QTcpServer other;
  ASSERT_TRUE(other.listen(QHostAddress::LocalHost));
  QByteArray heard;
  QObject::connect(&other, &QTcpServer::newConnection, [&] {
    QTcpSocket* const socket = other.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, [&heard, socket] {
      heard += socket->readAll();
      socket->abort();
    });
  });
  const QByteArray address = "://127.0.0.1:" + QByteArray::number(other.serverPort()) + "/compact\r\n";
  server.answer = response("307 Temporary Redirect", "Location: http" + address, partlyCloudy);
  EXPECT_EQ(failureOf(ask()), WeatherError::Refused);
  handlePendingEvents();
  EXPECT_EQ(heard, "");
  // The server there is no weather service, but is greeted as a secure one.
  server.answer = response("307 Temporary Redirect", "Location: https" + address, partlyCloudy);
  EXPECT_EQ(failureOf(ask()), WeatherError::NotReachable);
  EXPECT_TRUE(heard.startsWith("\x16\x03")) << heard.toHex().toStdString();
}

TEST_F(WeatherManagerTest, AsksOnceForAllThatWaitForAPlaceEvenIfNobodyHears) {
  server.answer = response("200 OK", "", partlyCloudy);
  for (int i = 0; i < 3; ++i) request();
  request(60, 10);
  manager->weatherAtLatitude(60, 10, noon, {}, {});
  manager->weatherAtLatitude(91, 2, noon, {}, {});
  ASSERT_TRUE(runUntil([this] { return outcomes.size() == 4; }));
  handlePendingEvents();
  EXPECT_EQ(server.requests.size(), 2);
}

TEST_F(WeatherManagerTest, SaysNothingOnceItIsGone) {
  // While it waits for the service.
  server.onRequest = [this] { manager.reset(); };
  server.answer = response("200 OK", "", partlyCloudy);
  request();
  ASSERT_TRUE(runUntil([this] { return !manager; }));
  handlePendingEvents();
  // From inside the answer for another that waits, and with an answer on its way.
  server.onRequest = nullptr;
  restart();
  bool heard = false;
  manager->weatherAtLatitude(59.9139, 10.7522, noon,
                             [&](const QLWeather&) {
                               heard = true;
                               manager.reset();
                             },
                             {});
  request();
  ASSERT_TRUE(runUntil([&] { return heard; }));
  handlePendingEvents();
  EXPECT_TRUE(outcomes.empty());
}

// This program does not export what the module takes from it.
TEST_F(WeatherManagerTest, FailsWhereTheModuleCannotBeLoadedAndSaysSoOnce) {
  LogCapture log;
  const UserDefaults defaults(home.path(), u"own"_s);
  manager = onlineWeather(clock, defaults, home.path());
  EXPECT_EQ(failureOf(ask()), WeatherError::NotReachable);
  EXPECT_EQ(failureOf(ask()), WeatherError::NotReachable);
  EXPECT_EQ(onlineLocation(defaults), nullptr);
  EXPECT_EQ(log.lines().size(), 1);
}

}  // namespace
