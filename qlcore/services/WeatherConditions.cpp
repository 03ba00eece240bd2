#include "qlcore/services/WeatherConditions.h"

#include <algorithm>
#include <array>

namespace quillo {

namespace {

struct Condition {
  QLatin1StringView code;
  QLatin1StringView words;
  // Comes in a form each for day, night and polar twilight.
  bool hasLight{false};
};

// Every code of the service.
constexpr std::array conditions{
    // clang-format off
    Condition{QLatin1StringView("clearsky"), QLatin1StringView("Clear sky"), true},
    Condition{QLatin1StringView("cloudy"), QLatin1StringView("Cloudy")},
    Condition{QLatin1StringView("fair"), QLatin1StringView("Fair"), true},
    Condition{QLatin1StringView("fog"), QLatin1StringView("Fog")},
    Condition{QLatin1StringView("heavyrain"), QLatin1StringView("Heavy rain")},
    Condition{QLatin1StringView("heavyrainandthunder"), QLatin1StringView("Heavy rain and thunder")},
    Condition{QLatin1StringView("heavyrainshowers"), QLatin1StringView("Heavy rain showers"), true},
    Condition{QLatin1StringView("heavyrainshowersandthunder"), QLatin1StringView("Heavy rain showers and thunder"), true},
    Condition{QLatin1StringView("heavysleet"), QLatin1StringView("Heavy sleet")},
    Condition{QLatin1StringView("heavysleetandthunder"), QLatin1StringView("Heavy sleet and thunder")},
    Condition{QLatin1StringView("heavysleetshowers"), QLatin1StringView("Heavy sleet showers"), true},
    Condition{QLatin1StringView("heavysleetshowersandthunder"), QLatin1StringView("Heavy sleet showers and thunder"), true},
    Condition{QLatin1StringView("heavysnow"), QLatin1StringView("Heavy snow")},
    Condition{QLatin1StringView("heavysnowandthunder"), QLatin1StringView("Heavy snow and thunder")},
    Condition{QLatin1StringView("heavysnowshowers"), QLatin1StringView("Heavy snow showers"), true},
    Condition{QLatin1StringView("heavysnowshowersandthunder"), QLatin1StringView("Heavy snow showers and thunder"), true},
    Condition{QLatin1StringView("lightrain"), QLatin1StringView("Light rain")},
    Condition{QLatin1StringView("lightrainandthunder"), QLatin1StringView("Light rain and thunder")},
    Condition{QLatin1StringView("lightrainshowers"), QLatin1StringView("Light rain showers"), true},
    Condition{QLatin1StringView("lightrainshowersandthunder"), QLatin1StringView("Light rain showers and thunder"), true},
    Condition{QLatin1StringView("lightsleet"), QLatin1StringView("Light sleet")},
    Condition{QLatin1StringView("lightsleetandthunder"), QLatin1StringView("Light sleet and thunder")},
    Condition{QLatin1StringView("lightsleetshowers"), QLatin1StringView("Light sleet showers"), true},
    Condition{QLatin1StringView("lightsnow"), QLatin1StringView("Light snow")},
    Condition{QLatin1StringView("lightsnowandthunder"), QLatin1StringView("Light snow and thunder")},
    Condition{QLatin1StringView("lightsnowshowers"), QLatin1StringView("Light snow showers"), true},
    // The service spells these two so.
    Condition{QLatin1StringView("lightssleetshowersandthunder"), QLatin1StringView("Light sleet showers and thunder"), true},
    Condition{QLatin1StringView("lightssnowshowersandthunder"), QLatin1StringView("Light snow showers and thunder"), true},
    Condition{QLatin1StringView("partlycloudy"), QLatin1StringView("Partly cloudy"), true},
    Condition{QLatin1StringView("rain"), QLatin1StringView("Rain")},
    Condition{QLatin1StringView("rainandthunder"), QLatin1StringView("Rain and thunder")},
    Condition{QLatin1StringView("rainshowers"), QLatin1StringView("Rain showers"), true},
    Condition{QLatin1StringView("rainshowersandthunder"), QLatin1StringView("Rain showers and thunder"), true},
    Condition{QLatin1StringView("sleet"), QLatin1StringView("Sleet")},
    Condition{QLatin1StringView("sleetandthunder"), QLatin1StringView("Sleet and thunder")},
    Condition{QLatin1StringView("sleetshowers"), QLatin1StringView("Sleet showers"), true},
    Condition{QLatin1StringView("sleetshowersandthunder"), QLatin1StringView("Sleet showers and thunder"), true},
    Condition{QLatin1StringView("snow"), QLatin1StringView("Snow")},
    Condition{QLatin1StringView("snowandthunder"), QLatin1StringView("Snow and thunder")},
    Condition{QLatin1StringView("snowshowers"), QLatin1StringView("Snow showers"), true},
    Condition{QLatin1StringView("snowshowersandthunder"), QLatin1StringView("Snow showers and thunder"), true},
    // clang-format on
};

}  // namespace

std::optional<QString> weatherCondition(const QString& symbolCode) {
  const qsizetype end = symbolCode.indexOf(u'_');
  const QStringView code = QStringView(symbolCode).first(end < 0 ? symbolCode.size() : end);
  const QStringView light = QStringView(symbolCode).sliced(code.size());
  const auto* const found =
      std::ranges::find_if(conditions, [code](const Condition& condition) { return condition.code == code; });
  if (found == conditions.end()) return std::nullopt;
  const bool isKnown = light.isEmpty() || (found->hasLight && (light == QLatin1StringView("_day") ||
                                                               light == QLatin1StringView("_night") ||
                                                               light == QLatin1StringView("_polartwilight")));
  return isKnown ? std::optional(QString(found->words)) : std::nullopt;
}

}  // namespace quillo
