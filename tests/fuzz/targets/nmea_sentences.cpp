#include "FuzzTarget.h"
#include "qlcore/services/PositionProvider.h"
#include "qlcore/services/QLLocationManager.h"

#include <QCoreApplication>
#include <QNmeaPositionInfoSource>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

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

// The input as a recording, in memory.
class Recording {
 public:
  explicit Recording(const QByteArray& bytes) : m_descriptor(::memfd_create("recording", MFD_CLOEXEC)) {
    require(::write(m_descriptor, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size(),
            "the input can be stored");
  }
  ~Recording() { ::close(m_descriptor); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;
  [[nodiscard]] QString path() const { return u"/proc/self/fd/%1"_s.arg(m_descriptor); }

 private:
  int m_descriptor;
};

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

// Has found everything as soon as it is started.
class FoundSource final : public QGeoPositionInfoSource {
 public:
  explicit FoundSource(const std::vector<QGeoPositionInfo>& fixes) : QGeoPositionInfoSource(nullptr), m_fixes(fixes) {}
  void startUpdates() override {
    for (const auto& fix : m_fixes) Q_EMIT positionUpdated(fix);
  }
  void stopUpdates() override {}
  void requestUpdate(int) override {}
  [[nodiscard]] QGeoPositionInfo lastKnownPosition(bool) const override { return {}; }
  [[nodiscard]] PositioningMethods supportedPositioningMethods() const override { return AllPositioningMethods; }
  [[nodiscard]] int minimumUpdateInterval() const override { return 0; }
  [[nodiscard]] Error error() const override { return NoError; }

 private:
  const std::vector<QGeoPositionInfo>& m_fixes;
};

class FoundProvider final : public PositionProvider {
 public:
  explicit FoundProvider(const std::vector<QGeoPositionInfo>& fixes) : m_fixes(fixes) {}
  [[nodiscard]] bool isEnabled() const override { return true; }
  [[nodiscard]] std::unique_ptr<QGeoPositionInfoSource> makeSource() const override {
    return std::make_unique<FoundSource>(m_fixes);
  }

 private:
  const std::vector<QGeoPositionInfo>& m_fixes;
};

void locate(std::unique_ptr<PositionProvider> provider) {
  QLLocationManager manager(std::move(provider));
  manager.startWithTimeout(60, [](const std::shared_ptr<const QLLocation>& location, bool) {
    require(location && location->isValid(), "a place that is found makes sense");
    require(QLLocation::fromPropertyList(location->toPropertyList()).has_value(), "an entry can keep the place");
  });
  application().processEvents();
}

}  // namespace

// The input is played as far as it goes without a wait; then all of its sentences, whatever their times, are searched
// for a place.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  application();
  const QByteArray bytes = inputBytes(data, size);
  const Recording recording(bytes);
  const NMEAPositionProvider provider(recording.path());
  require(provider.isEnabled(), "a small file can be played");
  const auto source = provider.makeSource();
  require(source != nullptr, "a small file can be played");
  locate(std::make_unique<NMEAPositionProvider>(recording.path()));
  const auto fixes = Reader::fixes(*source, bytes);
  locate(std::make_unique<FoundProvider>(fixes));
  return 0;
}
