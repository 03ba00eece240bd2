#pragma once

#include "platform/FileManager.h"
#include "platform/linux/SessionBus.h"

#include <QObject>

namespace quillo {

// By the interface that file managers of desktops have on the session bus, org.freedesktop.FileManager1. Needs a
// QCoreApplication; what is asked when the object goes is not answered any more.
class SessionBusFileManager final : public QObject, public FileManager {
  Q_OBJECT

 public:
  SessionBusFileManager();

  void showItem(const QString& path, std::function<void()> failed) override;

 private:
  SessionBus m_bus;
};

}  // namespace quillo
