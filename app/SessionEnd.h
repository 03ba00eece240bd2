#pragma once

#include <QObject>

#include <functional>

class QGuiApplication;

namespace quillo {

// Lets the desktop's session end without asking anybody. The session manager first wants everything saved, and may
// still be told by another program to stay; then it says that it is over.
class SessionEnd final : public QObject {
  Q_OBJECT

 public:
  // `application` must outlive the object; `save` is called however often a session is about to end.
  SessionEnd(QGuiApplication& application, const std::function<void()>& save);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace quillo
