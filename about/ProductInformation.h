#pragma once

#include <QLatin1StringView>

// The product, its maker, and where they are found: what changes when somebody else publishes it, in one place.
namespace quillo::ProductInformation {

inline constexpr QLatin1StringView productSite{"https://quilloapp.example/"};
inline constexpr QLatin1StringView makerSite{"https://tallowmere.example/"};

// Shown in the About window, under the maker's sign.
inline constexpr QLatin1StringView copyright{"Copyright \xa9 2026 Tallowmere, LLC"};

// A person's or the product's profile on the social network: the handle as it is shown, and the page behind it.
struct Profile {
  QLatin1StringView handle;
  QLatin1StringView page;
};

inline constexpr Profile product{QLatin1StringView("@quilloapp"),
                                 QLatin1StringView("https://social.example/quilloapp")};
inline constexpr Profile designer{QLatin1StringView("@inkandmargin"),
                                  QLatin1StringView("https://social.example/inkandmargin")};
inline constexpr Profile firstDeveloper{QLatin1StringView("@pagesandpulp"),
                                        QLatin1StringView("https://social.example/pagesandpulp")};
inline constexpr Profile secondDeveloper{QLatin1StringView("@nightledger"),
                                         QLatin1StringView("https://social.example/nightledger")};

}  // namespace quillo::ProductInformation
