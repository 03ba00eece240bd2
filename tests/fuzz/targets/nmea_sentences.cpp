#include "FuzzTarget.h"
#include "foundation/FileContents.h"
#include "qlcore/services/QLLocationManager.h"
#include "tests/support/FakePositionSource.h"
#include "tests/support/TestHome.h"

#include <QCoreApplication>
#include <QNmeaPositionInfoSource>

#include <functional>
#include <utility>
#include <vector>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

QCoreApplication& application() {
  static int count = 1;
  static char name[] = "fuzz_nmea_sentences";
  static char* arguments[] = {name, nullptr};
  static QCoreApplication one(count, arguments);
  return one;
}

// Lets the positions of a source be read from sentences at once, without the pace of their clock.
struct Reader : QNmeaPositionInfoSource {
  static std::vector<QGeoPositionInfo> fixes(QGeoPositionInfoSource& source, const QByteArray& sentences) {
    auto* const nmea = qobject_cast<QNmeaPositionInfoSource*>(&source);
    require(nmea != nullptr, "a recording is read as NMEA");
    const auto parse = &Reader::parsePosInfoFromNmeaData;
    std::vector<QGeoPositionInfo> found;
    for (const QByteArray& sentence : sentences.split('\n')) {
      QGeoPositionInfo info;
      bool hasFix = false;
      if ((nmea->*parse)(sentence.constData(), static_cast<int>(sentence.size()), &info, &hasFix))
        found.push_back(std::move(info));
    }
    return found;
  }
};

// `find` is called when the search has started.
void locate(
    std::unique_ptr<PositionProvider> provider, const std::function<void()>& find = [] {}) {
  QLLocationManager manager(std::move(provider));
  manager.startWithTimeout(60, [](const std::shared_ptr<const QLLocation>& location, bool) {
    require(location && location->isValid(), "a place that is found makes sense");
    require(QLLocation::fromPropertyList(location->toPropertyList()).has_value(), "an entry can keep the place");
  });
  find();
  application().processEvents();
}

}  // namespace

// The input is played as far as it goes without a wait; then all of its sentences, whatever their times, are searched
// for a place.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  application();
  const QByteArray bytes = inputBytes(data, size);
  static const TestHome home;
  const QString recording = home.path(u"recording"_s);
  require(writeFileInPlace(recording, bytes), "the input can be stored");
  const NMEAPositionProvider provider(recording);
  require(provider.isEnabled(), "a small file can be played");
  const auto source = provider.makeSource();
  require(source != nullptr, "a small file can be played");
  locate(std::make_unique<NMEAPositionProvider>(recording));
  auto fake = std::make_unique<FakePositionProvider>();
  const auto& found = fake->source;
  locate(std::move(fake), [&] {
    for (const auto& fix : Reader::fixes(*source, bytes)) Q_EMIT found->positionUpdated(fix);
  });
  return 0;
}
