#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

namespace quillo {

// A shadow behind text. The offset's y points upwards, in points.
struct TextShadow {
  QColor color;
  QPointF offset;
  double blurRadius{0};

  bool operator==(const TextShadow&) const = default;
};

// How a title looks.
struct TextAttributes {
  QFont font;
  QColor foregroundColor{Qt::black};
  std::optional<TextShadow> shadow;

  bool operator==(const TextAttributes&) const = default;
};

// A text in one look. Lines end at "\n" only; nothing is wrapped or shortened.
struct AttributedString {
  QString string;
  TextAttributes attributes;

  [[nodiscard]] QSizeF size() const;
  // From the rectangle's top left; lines are centred in its width.
  void drawInRect(QPainter& painter, const QRectF& rect) const;

  bool operator==(const AttributedString&) const = default;
};

}  // namespace quillo
