#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <functional>

namespace quillo {

// Waits for the first tray of the session, of either kind. Qt decides once, with the first icon, which kind
// the process talks to for good; an icon made too early, as at log-in, would never appear in a tray that draws icons
// itself.
class TrayWatcher final : public QObject, public QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  // `onTray` is called once: from the event loop, or at once where there is a tray already.
  explicit TrayWatcher(std::function<void()> onTray);
  ~TrayWatcher() override;

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private Q_SLOTS:
  void lookAgain();

 private:
  std::function<void()> m_onTray;
};

}  // namespace quillo
