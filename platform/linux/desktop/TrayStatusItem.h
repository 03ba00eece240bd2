#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/desktop/StatusImage.h"
#include "platform/linux/desktop/TrayWatcher.h"
#include "platform/linux/desktop/TrayWindow.h"

#include <QHash>
#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>

#include <memory>

namespace quillo {

// The status item as a tray icon, in trays that embed a window (XEmbed) and in those that draw the icon themselves
// (StatusNotifierItem); Qt chooses when the icon is made, which is when there is a tray. One per process. Needs a
// QApplication.
class TrayStatusItem final : public QObject, public StatusItem {
  Q_OBJECT

 public:
  TrayStatusItem();

  void setImage(const QString& name, bool isTemplate) override;
  void setHighlighted(bool highlighted) override;
  void setToolTip(std::function<QString()> text) override;
  void setMenu(QMenu* menu) override;
  void setLength(double points) override;
  [[nodiscard]] std::optional<QRectF> geometry() const override;
  [[nodiscard]] QRectF anchor() const override;
  void onPrimaryClick(std::function<void()> callback) override;
  void onGeometryChanged(std::function<void()> callback) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void makeIcon();
  void menuWillOpen();
  void activated(QSystemTrayIcon::ActivationReason reason);
  void trayWindowChanged();
  void checkForeground();
  // The colour that reads on the panel; nothing where that cannot be told.
  [[nodiscard]] std::optional<QColor> foreground() const;
  void updateIcon();
  void updateToolTip();
  [[nodiscard]] StatusImageStyle style() const;
  [[nodiscard]] QIcon drawnIcon(const StatusImageStyle& style) const;

  std::unique_ptr<QSystemTrayIcon> m_icon;  // null until there is a tray
  TrayWindow m_window;
  QTimer m_settled;
  QTimer m_menuIsOver;
  QPointer<QMenu> m_menu;
  std::function<QString()> m_toolTip;
  QTimer m_highlightSoon;
  QString m_imageName;
  bool m_isTemplate{false};
  bool m_isHighlighted{false};
  bool m_isPlaced{false};  // by a tray that embeds it
  double m_length{0};
  std::optional<QColor> m_foreground;
  // By their looks: drawn anew, each would stay in Qt's cache as another.
  QHash<QString, QIcon> m_icons;
  std::optional<QPointF> m_lastClick;
  std::function<void()> m_onPrimaryClick;
  std::function<void()> m_onGeometryChanged;
  // Last: it calls back when it is made where there is a tray.
  TrayWatcher m_watcher;
};

}  // namespace quillo
