#include "app/SessionEnd.h"

#include <QEvent>
#include <QGuiApplication>
#include <QSessionManager>

namespace quillo {

SessionEnd::SessionEnd(QGuiApplication& application, const std::function<void()>& save) {
  connect(
      &application, &QGuiApplication::commitDataRequest, this,
      [save](QSessionManager& manager) {
        // What starts with the next session is for the login item to say.
        manager.setRestartHint(QSessionManager::RestartNever);
        save();
      },
      Qt::DirectConnection);
  application.installEventFilter(this);
}

bool SessionEnd::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Quit || watched != QCoreApplication::instance()) return false;
  // Qt would close every window first, and stay for one that does not.
  QCoreApplication::exit();
  return true;
}

}  // namespace quillo
