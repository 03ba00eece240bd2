#pragma once

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/session/EntryDraft.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/WeatherService.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

// Says nothing of a place until a test does.
struct FakeLocationService : LocationService {
  [[nodiscard]] bool locationServicesEnabled() const override { return enabled; }
  [[nodiscard]] bool isAuthorized() const override { return authorized; }
  [[nodiscard]] bool isSearching() const override { return handler != nullptr; }
  void startWithTimeout(double seconds, Handler newHandler) override {
    timeout = seconds;
    handler = std::move(newHandler);
    ++searches;
  }
  void stop() override { handler = {}; }
  [[nodiscard]] double horzAccuracy() const override { return accuracy; }
  void find(const std::shared_ptr<const QLLocation>& found, double metres, bool isFinal) {
    accuracy = metres;
    const auto current = isFinal ? std::exchange(handler, {}) : handler;
    current(found, isFinal);
  }

  static inline bool enabled{true}, authorized{true};
  Handler handler;
  double timeout{0}, accuracy{0};
  int searches{0};
};

struct FakeWeatherService : WeatherService {
  void weatherAtLatitude(double latitude, double longitude, Date, Success success, Failure failure) override {
    asked.push_back({latitude, longitude});
    succeed = std::move(success);
    fail = std::move(failure);
  }
  std::vector<std::pair<double, double>> asked;
  Success succeed;
  Failure fail;
};

inline std::shared_ptr<const QLLocation> berlin() {
  return std::make_shared<const QLLocation>(QLLocation{52.52, 13.405, {}});
}
inline QLWeather mildWeather() {
  return {18.2, QStringLiteral("partlycloudy_day"), {}, {}, {}};
}

// A journal to write entries into, and what an entry is written with.
class EntryTest : public testing::Test {
 protected:
  EntryTest() {
    QLJournalPackageFile::setDefaultPackageURLProvider([this] { return config.configuredJournalFileURL(); });
    useJournal(u"J.quillojournal"_s);
  }
  ~EntryTest() override { QLJournalPackageFile::setDefaultPackageURLProvider({}); }

  // Makes it where it is not there.
  void useJournal(const QString& name) {
    journalURL = QUrl::fromLocalFile(home.path(name));
    Error error;
    EXPECT_TRUE(QLJournalPackageFile::openPackage(journalURL, true, &error)) << error.description().toStdString();
    config.setConfiguredJournalFileURL(journalURL);
  }
  void breakJournal() { ASSERT_TRUE(QFile::remove(journalURL.toLocalFile() + u"/Journal.plist"_s)); }
  QList<std::shared_ptr<QLJournalEntryFile>> entries() {
    return QLJournalIndex(QLJournalPackageFile::openPackage(journalURL, false, nullptr)).entries();
  }
  std::function<std::unique_ptr<LocationService>()> makeLocationManager() {
    return [this] {
      auto made = std::make_unique<FakeLocationService>();
      location = made.get();
      return made;
    };
  }

  TestHome home;
  const QString draftPath = home.path(u"cache/UnsavedEntry.plist"_s);
  UserDefaults defaults{home.path(u"config"_s), Identifier::agent};
  QuilloConfig config{UserDirectories::current(), defaults, [](const char*) { return QString(); }};
  QUrl journalURL;
  std::unique_ptr<EntryDraft> draft = std::make_unique<EntryDraft>(draftPath);
  FakeWeatherService weather;
  FakeLocationService* location{nullptr};  // the latest, once it was asked for
};

}  // namespace quillo
