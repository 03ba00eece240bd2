#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace quillo {

// What a quillo: URL asks of the main application.
struct QuilloRequest {
  enum class Kind { Open, Edit, Post, Preferences, SetUp, UpdateBookmarks };

  Kind kind{Kind::Open};
  QString entryIdentifier;  // of Edit; as it came, not checked

  bool operator==(const QuilloRequest&) const = default;
};

// Nothing where the URL is none that Quillo knows.
[[nodiscard]] std::optional<QuilloRequest> requestOfURL(const QUrl& url);

}  // namespace quillo
