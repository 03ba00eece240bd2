#include "platform/linux/desktop/TrayStatusItem.h"

#include "foundation/Log.h"
#include "platform/QtInternals.h"
#include "platform/linux/desktop/Display.h"
#include "platform/linux/desktop/StatusItemAnchor.h"
#include "platform/linux/desktop/X11.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
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
// A panel that has just changed may still have to paint itself.
constexpr std::chrono::milliseconds settleTime{300};
// How long a menu that a tray draws counts as shown where the tray does not tell that it closed it.
constexpr std::chrono::seconds longestMenu{5};

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
  // With several screens Qt leaves panels in.
  return areas.size() > 1 ? withoutPanels(areas, X11::panels()) : areas;
}

}  // namespace

TrayStatusItem::TrayStatusItem()
    : m_window([this] { trayWindowChanged(); }, [this] { checkForeground(); }), m_watcher([this] { makeIcon(); }) {
  m_settled.setSingleShot(true);
  m_settled.setInterval(settleTime);
  connect(&m_settled, &QTimer::timeout, this, &TrayStatusItem::checkForeground);
  m_highlightSoon.setSingleShot(true);
  m_highlightSoon.setInterval(highlightDelay);
  connect(&m_highlightSoon, &QTimer::timeout, this, &TrayStatusItem::updateIcon);
  m_menuIsOver.setSingleShot(true);
  m_menuIsOver.setInterval(longestMenu);
  connect(&m_menuIsOver, &QTimer::timeout, this, [this] {
    if (m_menu && !m_menu->isVisible()) Q_EMIT m_menu->aboutToHide();
  });
  const auto watchPanelsOf = [this](const QScreen* screen) {
    connect(screen, &QScreen::availableGeometryChanged, &m_settled, qOverload<>(&QTimer::start));
  };
  for (const auto* screen : QGuiApplication::screens()) watchPanelsOf(screen);
  connect(qApp, &QGuiApplication::screenAdded, &m_settled, watchPanelsOf);
  qApp->installEventFilter(this);
}

void TrayStatusItem::makeIcon() {
  m_icon = std::make_unique<QSystemTrayIcon>();
  connect(m_icon.get(), &QSystemTrayIcon::activated, this, &TrayStatusItem::activated);
  m_icon->setContextMenu(m_menu);
  updateIcon();
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

void TrayStatusItem::setToolTip(std::function<QString()> text) {
  m_toolTip = std::move(text);
  if (m_icon && !TrayWindow::isEmbeddable()) updateToolTip();
}

void TrayStatusItem::updateToolTip() {
  if (!m_icon || !m_toolTip) return;
  // Trays that draw icons are told of each setting.
  if (const QString text = m_toolTip(); text != m_icon->toolTip()) m_icon->setToolTip(text);
}

void TrayStatusItem::menuWillOpen() {
  if (m_icon && !TrayWindow::isEmbeddable()) m_menuIsOver.start();
}

void TrayStatusItem::setMenu(QMenu* menu) {
  if (m_menu) {
    disconnect(m_menu, nullptr, this, nullptr);
    disconnect(m_menu, nullptr, &m_menuIsOver, nullptr);
  }
  m_menuIsOver.stop();
  m_menu = menu;
  if (menu) {
    connect(menu, &QMenu::aboutToShow, this, &TrayStatusItem::menuWillOpen);
    connect(menu, &QMenu::aboutToHide, &m_menuIsOver, &QTimer::stop);
  }
  if (m_icon) m_icon->setContextMenu(menu);
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
  // Over a Wayland panel, an X client does not see the pointer.
  if (!isWaylandSession()) m_lastClick = QCursor::pos();
  // Another program's window may have covered the panel when its colour was looked at.
  m_settled.start();
  switch (reason) {
    case QSystemTrayIcon::Trigger:
    // The second of two fast clicks comes as a double click and not as a click.
    case QSystemTrayIcon::DoubleClick:
      // A copy, as the callback may set another.
      if (const auto callback = m_onPrimaryClick) callback();
      break;
    case QSystemTrayIcon::MiddleClick:
      // Qt shows the menu on the secondary click only. A Wayland compositor would place it as a window like any other,
      // or under the panel.
      if (m_menu && !isWaylandSession()) m_menu->popup(anchor().bottomLeft().toPoint());
      break;
    default:
      break;
  }
}

void TrayStatusItem::trayWindowChanged() {
  checkForeground();
  // The first time, the tray has the icon painted. A panel that moves it may still have to paint itself, and need not
  // say so.
  if (std::exchange(m_isPlaced, m_window.pixels().has_value())) m_settled.start();
  if (const auto callback = m_onGeometryChanged) callback();
}

bool TrayStatusItem::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp) m_settled.start();
  // Qt's window in a tray that embeds one is about to show the tip.
  if (event->type() == QEvent::ToolTip && watched->inherits(QtInternals::trayIconWindow)) updateToolTip();
  return QObject::eventFilter(watched, event);
}

void TrayStatusItem::checkForeground() {
  const auto before = std::exchange(m_foreground, foreground());
  if (m_foreground != before) updateIcon();
}

std::optional<QColor> TrayStatusItem::foreground() const {
  if (const auto colour = m_window.foreground()) return colour;
  // A tray that draws icons itself tells nothing of its colours. Where the screen can be looked at, its panel shows.
  if (isWaylandSession()) return {};
  const QList<ScreenArea> areas = screenAreas();
  return readableOnMost(X11::pixelsOf(linesAlong(pixelsOfGlobalRect(panelStrip(areas), areas).toRect())));
}

StatusImageStyle TrayStatusItem::style() const {
  StatusImageStyle style;
  style.isHighlighted = m_isHighlighted;
  if (m_foreground) {
    if (m_isTemplate) style.tint = m_foreground;
    style.highlight = *m_foreground;
    return style;
  }
  // The windows' colour is a guess only: panels are often dark where windows are light. In two tones the image reads on
  // either.
  const QColor guess = QApplication::palette().color(QPalette::WindowText);
  if (m_isTemplate) {
    style.tint = guess;
    style.outline = readableOn(guess);
  }
  style.highlight = Qt::gray;
  return style;
}

QIcon TrayStatusItem::drawnIcon(const StatusImageStyle& style) const {
  const QString base = u":/quillo/images/"_s + m_imageName;
  QIcon icon;
  for (const int ratio : {1, 2}) {
    const QString path = base + (ratio == 1 ? u".png"_s : u"@2x.png"_s);
    const QImage image = imageOfPNG(path);
    if (image.isNull()) continue;
    const QSizeF points(m_length > 0 ? m_length : image.width() / double(ratio), iconPoints);
    icon.addPixmap(QPixmap::fromImage(statusImage(image, points, ratio, style)));
  }
  if (icon.isNull()) QLLogError(u"The image %1 of the status item is missing"_s.arg(m_imageName));
  return icon;
}

void TrayStatusItem::updateIcon() {
  if (!m_icon || m_imageName.isEmpty()) return;
  if (!m_foreground) m_foreground = foreground();
  const StatusImageStyle wanted = style();
  const QString look = u"%1 %2 %3 %4 %5"_s.arg(m_imageName)
                           .arg(m_length)
                           .arg(wanted.isHighlighted)
                           .arg(wanted.highlight.rgba())
                           .arg(wanted.tint.value_or(Qt::transparent).rgba());
  QIcon icon = m_icons.value(look);
  if (icon.isNull()) {
    icon = drawnIcon(wanted);
    // Pressed and not, of the few images there are; more come only from trays that change their colours.
    if (m_icons.size() >= mostIconsKept) m_icons.clear();
    m_icons.insert(look, icon);
  }
  m_icon->setIcon(icon);
  // Only now, as an icon without an image would stand in the tray as a gap.
  if (!m_icon->isVisible()) {
    m_icon->show();
    if (!TrayWindow::isEmbeddable()) m_settled.start();
  }
  if (!TrayWindow::isEmbeddable()) updateToolTip();
}

}  // namespace quillo
