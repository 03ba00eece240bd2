#include "config/Keys.h"
#include "foundation/Log.h"
#include "foundation/UserDefaults.h"
#include "qlcore/services/PositionProvider.h"

#include <QFile>
#include <QFileInfo>
#include <QNmeaPositionInfoSource>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Metres by which an ordinary receiver is off for each unit of the dilution that it reports.
constexpr double rangeError = 5.1;
// The player skips what it does not understand without a pause: a tenth of a second for as much as this.
constexpr qint64 largestFile = 1024LL * 1024;

const QString serialPrefix = u"serial:"_s;
const QString socketPrefix = u"socket:"_s;

bool isPlayable(const QString& path) {
  const QFileInfo file(path);
  return file.isFile() && file.isReadable() && file.size() <= largestFile;
}

std::unique_ptr<QGeoPositionInfoSource> player(const QString& path) {
  auto file = std::make_unique<QFile>(path);
  if (!isPlayable(path) || !file->open(QIODevice::ReadOnly)) return nullptr;
  auto source = std::make_unique<QNmeaPositionInfoSource>(QNmeaPositionInfoSource::SimulationMode);
  file->setParent(source.get());
  source->setDevice(file.release());
  return source;
}

}  // namespace

bool NMEAPositionProvider::isEnabled() const {
  if (m_receiver.startsWith(socketPrefix)) return true;
  if (m_receiver.startsWith(serialPrefix)) return QFileInfo::exists(m_receiver.sliced(serialPrefix.size()));
  return isPlayable(m_receiver);
}

std::unique_ptr<QGeoPositionInfoSource> NMEAPositionProvider::makeSource() const {
  const bool isDevice = m_receiver.startsWith(socketPrefix) || m_receiver.startsWith(serialPrefix);
  auto source = isDevice ? std::unique_ptr<QGeoPositionInfoSource>(QGeoPositionInfoSource::createSource(
                               u"nmea"_s, {{u"nmea.source"_s, m_receiver}}, nullptr))
                         : player(m_receiver);
  // Without it no fix has an accuracy.
  if (auto* const nmea = qobject_cast<QNmeaPositionInfoSource*>(source.get()))
    nmea->setUserEquivalentRangeError(rangeError);
  if (!source) QLLogWarn(u"There is no NMEA receiver at %1"_s.arg(m_receiver));
  return source;
}

std::unique_ptr<PositionProvider> positionProvider(const UserDefaults& ownDefaults) {
  const auto receiver = ownDefaults.objectForKey(Key::locationNMEASource);
  if (receiver && !receiver->string().isEmpty()) return std::make_unique<NMEAPositionProvider>(receiver->string());
  return std::make_unique<GeoCluePositionProvider>();
}

}  // namespace quillo
