#pragma once

#include "qlcore/services/PositionProvider.h"

#include <QGeoPositionInfoSource>
#include <QPointer>

namespace quillo {

// Finds what it is told to.
struct FakePositionSource final : QGeoPositionInfoSource {
  explicit FakePositionSource(Error error) : QGeoPositionInfoSource(nullptr), errorAtStart(error) {}
  void startUpdates() override {
    if (errorAtStart != NoError) Q_EMIT errorOccurred(errorAtStart);
  }
  void stopUpdates() override {}
  void requestUpdate(int) override {}
  QGeoPositionInfo lastKnownPosition(bool) const override { return {}; }
  PositioningMethods supportedPositioningMethods() const override { return AllPositioningMethods; }
  int minimumUpdateInterval() const override { return 0; }
  Error error() const override { return NoError; }

  Error errorAtStart;
};

struct FakePositionProvider final : PositionProvider {
  bool isEnabled() const override { return true; }
  std::unique_ptr<QGeoPositionInfoSource> makeSource() const override {
    if (hasNone) return nullptr;
    auto made = std::make_unique<FakePositionSource>(errorAtStart);
    source = made.get();
    return made;
  }

  bool hasNone{false};
  QGeoPositionInfoSource::Error errorAtStart{QGeoPositionInfoSource::NoError};
  mutable QPointer<FakePositionSource> source;  // the latest, while it lives
};

}  // namespace quillo
