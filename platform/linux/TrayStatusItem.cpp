#include "platform/linux/TrayStatusItem.h"

#include "foundation/Log.h"
#include "platform/linux/StatusImage.h"
#include "platform/linux/StatusItemAnchor.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QFile>
#include <QPalette>
#include <QScreen>

#include <algorithm>
#include <chrono>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What trays are made for; they scale it to their own size.
constexpr double iconPoints = 22;
// The window that is the reason for the highlight comes first: a panel may paint itself as a whole for one icon.
constexpr std::chrono::milliseconds highlightDelay{30};
constexpr double widestLength = 256;
constexpr qsizetype mostIconsKept = 16;
// A panel that has just placed an icon may still have to paint itself.
constexpr std::chrono::milliseconds settleTime{300};

QList<ScreenArea> screenAreas() {
  QList<ScreenArea> areas;
  const auto* primary = QGuiApplication::primaryScreen();
  for (const auto* screen : QGuiApplication::screens()) {
    const ScreenArea area{screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()};
    if (screen == primary)
      areas.prepend(area);
    else
      areas.append(area);
  }
  return areas;
}

}  // namespace

TrayStatusItem::TrayStatusItem() : m_window([this] { trayWindowChanged(); }) {
  m_settled.setSingleShot(true);
  m_settled.setInterval(settleTime);
  connect(&m_settled, &QTimer::timeout, this, &TrayStatusItem::checkForeground);
  m_highlightSoon.setSingleShot(true);
  m_highlightSoon.setInterval(highlightDelay);
  connect(&m_highlightSoon, &QTimer::timeout, this, &TrayStatusItem::updateIcon);
  connect(&m_icon, &QSystemTrayIcon::activated, this, &TrayStatusItem::activated);
  qApp->installEventFilter(this);
}

void TrayStatusItem::setImage(const QString& name, bool isTemplate) {
  if (name == m_imageName && isTemplate == m_isTemplate) return;
  m_imageName = name;
  m_isTemplate = isTemplate;
  updateIcon();
}

void TrayStatusItem::setHighlighted(bool highlighted) {
  if (std::exchange(m_isHighlighted, highlighted) != highlighted) m_highlightSoon.start();
}

void TrayStatusItem::setToolTip(const QString& text) {
  m_icon.setToolTip(text);
}

void TrayStatusItem::setMenu(QMenu* menu) {
  m_icon.setContextMenu(menu);
}

void TrayStatusItem::setLength(double points) {
  // Nothing or less asks for the width of the image.
  const double length = points > 0 ? std::min(points, widestLength) : 0;
  if (std::exchange(m_length, length) != length) updateIcon();
}

std::optional<QRectF> TrayStatusItem::geometry() const {
  const auto pixels = m_window.pixels();
  if (!pixels) return {};
  return globalRectOfPixels(*pixels, screenAreas());
}

QRectF TrayStatusItem::anchor() const {
  return statusItemAnchor(geometry(), m_lastClick, screenAreas());
}

void TrayStatusItem::onPrimaryClick(std::function<void()> callback) {
  m_onPrimaryClick = std::move(callback);
}

void TrayStatusItem::onGeometryChanged(std::function<void()> callback) {
  m_onGeometryChanged = std::move(callback);
}

void TrayStatusItem::activated(QSystemTrayIcon::ActivationReason reason) {
  m_lastClick = QCursor::pos();
  // The second of two fast clicks comes as a double click and not as a click.
  if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::DoubleClick) return;
  // A copy, as the callback may set another.
  if (const auto callback = m_onPrimaryClick) callback();
}

void TrayStatusItem::trayWindowChanged() {
  m_settled.start();
  checkForeground();
  if (const auto callback = m_onGeometryChanged) callback();
}

bool TrayStatusItem::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp) m_settled.start();
  return QObject::eventFilter(watched, event);
}

void TrayStatusItem::checkForeground() {
  const QColor before = m_foreground;
  m_foreground = m_window.foreground().value_or(QApplication::palette().color(QPalette::WindowText));
  if (m_foreground != before) updateIcon();
}

QIcon TrayStatusItem::drawnIcon() const {
  StatusImageStyle style;
  if (m_isTemplate) style.tint = m_foreground;
  style.isHighlighted = m_isHighlighted;
  style.highlight = m_foreground;

  const QString base = u":/quillo/images/"_s + m_imageName;
  QIcon icon;
  for (const int ratio : {1, 2}) {
    const QString path = base + (ratio == 1 ? u".png"_s : u"@2x.png"_s);
    if (!QFile::exists(path)) continue;
    QImage image(path);
    const QSizeF points(m_length > 0 ? m_length : image.width() / double(ratio), iconPoints);
    icon.addPixmap(QPixmap::fromImage(statusImage(image, points, ratio, style)));
  }
  if (icon.isNull()) QLLogError(u"The image %1 of the status item is missing"_s.arg(m_imageName));
  return icon;
}

void TrayStatusItem::updateIcon() {
  if (m_imageName.isEmpty()) return;
  if (!m_foreground.isValid()) m_foreground = QApplication::palette().color(QPalette::WindowText);
  const QString look = u"%1 %2 %3 %4 %5"_s.arg(m_imageName)
                           .arg(m_isTemplate)
                           .arg(m_isHighlighted)
                           .arg(m_length)
                           .arg(m_foreground.rgba());
  QIcon icon = m_icons.value(look);
  if (icon.isNull()) {
    icon = drawnIcon();
    // Pressed and not, of the few images there are; more come only from trays that change their colours.
    if (m_icons.size() >= mostIconsKept) m_icons.clear();
    m_icons.insert(look, icon);
  }
  m_icon.setIcon(icon);
  // Only now, as an icon without an image would stand in the tray as a gap.
  if (!m_icon.isVisible()) m_icon.show();
}

}  // namespace quillo
