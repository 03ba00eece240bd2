#include "controls/QLScroller.h"

#include <QPaintEvent>
#include <QProxyStyle>
#include <QStyleOptionSlider>

namespace quillo {

namespace {

constexpr int slotInset = 2;         // points the knob stays away from the ends of the bar
constexpr int minimumKnobSize = 24;  // points: still easy to take hold of in a long text

}  // namespace

// The geometry of a bar without arrows, so that the pointer meets the knob where it is drawn.
class ScrollerStyle : public QProxyStyle {
 public:
  int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
    switch (metric) {
      case PM_ScrollBarExtent:
        return QLScroller::scrollerWidth;
      case PM_ScrollBarSliderMin:
        return minimumKnobSize;
      default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override {
    // No fading in and out, which the base style would draw itself.
    if (hint == SH_ScrollBar_Transient) return 0;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
  }

  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                       const QWidget* widget) const override {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !bar) return QProxyStyle::subControlRect(control, option, subControl, widget);
    const bool vertical = bar->orientation == Qt::Vertical;
    const QRect slot =
        vertical ? bar->rect.adjusted(0, slotInset, 0, -slotInset) : bar->rect.adjusted(slotInset, 0, -slotInset, 0);
    const int slotLength = qMax(0, vertical ? slot.height() : slot.width());
    const int knobLength = lengthOfKnob(*bar, slotLength);
    const int before = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, slotLength - knobLength,
                                               bar->upsideDown);
    const auto part = [&](int from, int length) {
      return vertical ? QRect(slot.x(), slot.y() + from, slot.width(), length)
                      : QRect(slot.x() + from, slot.y(), length, slot.height());
    };
    switch (subControl) {
      case SC_ScrollBarGroove:
        return slot;
      case SC_ScrollBarSlider:
        return part(before, knobLength);
      case SC_ScrollBarSubPage:
        return part(-slotInset, slotInset + before);  // from the very end of the bar, so that no point of it is dead
      case SC_ScrollBarAddPage:
        return part(before + knobLength, slotLength - before - knobLength + slotInset);
      default:
        return {};  // arrows
    }
  }

 private:
  static int lengthOfKnob(const QStyleOptionSlider& bar, int slotLength) {
    // In 64 bits: a range may be as wide as an int goes.
    const qint64 range = qint64{bar.maximum} - bar.minimum;
    if (range <= 0) return slotLength;
    const qint64 page = qMax(0, bar.pageStep);
    const auto length = static_cast<int>(page * slotLength / (range + page));
    return qMin(slotLength, qMax(minimumKnobSize, length));
  }
};

QLScroller::QLScroller(QWidget* parent) : QLScroller(Qt::Vertical, parent) {}

QLScroller::QLScroller(Qt::Orientation orientation, QWidget* parent)
    : QScrollBar(orientation, parent), m_style(std::make_unique<ScrollerStyle>()) {
  setStyle(m_style.get());
  setAttribute(Qt::WA_OpaquePaintEvent, false);
}

QLScroller::~QLScroller() = default;

QRectF QLScroller::rectForKnob() const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
}

QRectF QLScroller::knobRect() const {
  const QRectF knob = rectForKnob();
  return {(scrollerWidth - knobWidth) * 0.5, knob.y(), knobWidth, knob.height()};
}

void QLScroller::paintEvent(QPaintEvent* /*event*/) {
  // The slot is clear and the base draws nothing: only the knob covers what lies behind.
  QPainter painter(this);
  drawKnob(painter);
}

void QLScroller::drawKnob(QPainter& painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgbF(0.5F, 0.5F, 0.5F, 0.5F));
  painter.drawRoundedRect(knobRect(), knobRadius, knobRadius);
}

}  // namespace quillo
